// What the macOS platform uses of this framework, declared from its public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

using BOOL = bool;
using NSInteger = long;
using NSUInteger = unsigned long;
using NSTimeInterval = double;  // seconds

struct NSOperatingSystemVersion {
  NSInteger majorVersion;
  NSInteger minorVersion;
  NSInteger patchVersion;
};

struct NSFastEnumerationState {
  unsigned long state;
  void** itemsPtr;
  unsigned long* mutationsPtr;
  unsigned long extra[5];
};

// The stand-ins are not written in Objective-C and need the records only.
#ifdef __OBJC__

#define nil nullptr

__attribute__((objc_root_class))
@interface NSObject
@end

@interface NSString : NSObject
@end

@interface NSDate : NSObject
@property(readonly) NSTimeInterval timeIntervalSince1970;
@end

@interface NSArray<ObjectType> : NSObject
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(__unsafe_unretained id*)buffer
                                    count:(NSUInteger)length;
@end

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) NSTimeInterval systemUptime;
- (BOOL)isOperatingSystemAtLeastVersion:(NSOperatingSystemVersion)version;
@end

#endif
