// What the macOS platform uses of this framework, declared from its public documentation so that
// the platform can be compiled and tested where the framework does not exist.
#pragma once

extern "C" {

using Boolean = unsigned char;
using UInt8 = unsigned char;
using UInt32 = unsigned int;
using SInt32 = int;
using SInt64 = long long;
using OSStatus = SInt32;

using CFIndex = long;
using CFTypeID = unsigned long;
using CFHashCode = unsigned long;
using CFOptionFlags = unsigned long;
using CFTimeInterval = double;  // seconds
using CFAbsoluteTime = double;  // seconds since 2001
using CFStringEncoding = UInt32;

using CFTypeRef = const void*;
using CFAllocatorRef = const struct CFAllocatorObject*;
using CFStringRef = const struct CFStringObject*;
using CFNumberRef = const struct CFNumberObject*;
using CFBooleanRef = const struct CFBooleanObject*;
using CFURLRef = const struct CFURLObject*;
using CFArrayRef = const struct CFArrayObject*;
using CFDictionaryRef = const struct CFDictionaryObject*;
using CFUUIDRef = const struct CFUUIDObject*;
using CFRunLoopRef = struct CFRunLoopObject*;
using CFRunLoopTimerRef = struct CFRunLoopTimerObject*;
using CFRunLoopMode = CFStringRef;

struct CFRange {
  CFIndex location;
  CFIndex length;
};
inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
  return {location, length};
}

extern const CFAllocatorRef kCFAllocatorDefault;

// Every object.
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
Boolean CFEqual(CFTypeRef left, CFTypeRef right);
CFHashCode CFHash(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);

// Strings.
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };
CFTypeID CFStringGetTypeID();
CFIndex CFStringGetLength(CFStringRef string);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex bufferSize, CFIndex* usedSize);

// Numbers and Booleans.
enum CFNumberType : CFIndex { kCFNumberSInt64Type = 4 };
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
CFTypeID CFBooleanGetTypeID();
Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFTypeID CFNumberGetTypeID();
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

// Addresses.
CFTypeID CFURLGetTypeID();
CFURLRef CFURLCopyAbsoluteURL(CFURLRef url);
CFStringRef CFURLGetString(CFURLRef url);

// Collections.
CFTypeID CFArrayGetTypeID();
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
CFTypeID CFDictionaryGetTypeID();
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

// Identifiers and time.
CFUUIDRef CFUUIDCreate(CFAllocatorRef allocator);
CFStringRef CFUUIDCreateString(CFAllocatorRef allocator, CFUUIDRef uuid);
extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1970;
CFAbsoluteTime CFAbsoluteTimeGetCurrent();

// The run loop.
struct CFRunLoopTimerContext {
  CFIndex version;
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
};
using CFRunLoopTimerCallBack = void (*)(CFRunLoopTimerRef timer, void* info);
extern const CFRunLoopMode kCFRunLoopDefaultMode;
CFRunLoopRef CFRunLoopGetMain();
enum CFRunLoopRunResult : SInt32 {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4,
};
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled);
void CFRunLoopAddTimer(CFRunLoopRef loop, CFRunLoopTimerRef timer, CFRunLoopMode mode);
CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags flags, CFIndex order,
                                       CFRunLoopTimerCallBack callOut,
                                       CFRunLoopTimerContext* context);

}  // extern "C"
