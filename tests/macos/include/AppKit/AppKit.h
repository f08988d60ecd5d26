// What the macOS platform uses of this framework's workspace, declared from its public
// documentation.
#pragma once

#include <Foundation/Foundation.h>
#include <sys/types.h>

enum NSApplicationActivationPolicy : NSInteger {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
  NSApplicationActivationPolicyProhibited = 2,
};

#ifdef __OBJC__

@interface NSRunningApplication : NSObject
@property(readonly) pid_t processIdentifier;
@property(readonly) NSApplicationActivationPolicy activationPolicy;
@property(readonly, copy, nullable) NSString* bundleIdentifier;
@property(readonly, copy, nullable) NSDate* launchDate;
+ (nullable instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong, nonnull) NSWorkspace* sharedWorkspace;
@property(readonly, copy, nonnull) NSArray<NSRunningApplication*>* runningApplications;
@property(readonly, strong, nullable) NSRunningApplication* frontmostApplication;
@end

#endif
