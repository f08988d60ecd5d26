// What the macOS platform uses of this framework's window list, declared from its public
// documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

using CGWindowID = UInt32;
using CGWindowListOption = UInt32;
enum : CGWindowListOption {
  kCGWindowListOptionOnScreenOnly = 1U << 0U,
  kCGWindowListExcludeDesktopElements = 1U << 4U,
};
constexpr CGWindowID kCGNullWindowID = 0;

extern const CFStringRef kCGWindowOwnerPID;
extern const CFStringRef kCGWindowName;
extern const CFStringRef kCGWindowLayer;
extern const CFStringRef kCGWindowNumber;

// NULL outside a session with a window server.
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow);

}  // extern "C"
