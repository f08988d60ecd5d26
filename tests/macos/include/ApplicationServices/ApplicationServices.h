// What the macOS platform uses of this framework's accessibility interface, declared from its
// public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

extern "C" {

enum AXError : SInt32 {
  kAXErrorSuccess = 0,
  kAXErrorFailure = -25200,
  kAXErrorIllegalArgument = -25201,
  kAXErrorInvalidUIElement = -25202,
  kAXErrorCannotComplete = -25204,
  kAXErrorAttributeUnsupported = -25205,
  kAXErrorNotImplemented = -25208,
  kAXErrorAPIDisabled = -25211,
  kAXErrorNoValue = -25212,
};

using AXUIElementRef = const struct AXUIElementObject*;

Boolean AXIsProcessTrusted();
CFTypeID AXUIElementGetTypeID();
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value);
AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value);

}  // extern "C"
