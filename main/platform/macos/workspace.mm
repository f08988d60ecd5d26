// The workspace and the process information: everything that is asked of the system's objects.
//
// Those objects are counted by the compiler, and many come out of a pool that has to be there: that
// of the cycle, or one of a function's own where it is called outside a cycle too.
#include "platform/macos/workspace.h"

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/macos/core_values.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Absent for an application without a process, whose process id is -1, and for nil.
std::optional<Application> applicationOf(NSRunningApplication* running) {
  if (running == nil || running.processIdentifier < 0) return std::nullopt;
  Application application;
  application.pid = running.processIdentifier;
  // Not known of a process that was not started through the launch services.
  if (NSDate* const launched = running.launchDate) {
    application.launchedAt = launched.timeIntervalSince1970;
  }
  application.bundleIdentifier = textOf((__bridge CFTypeRef)running.bundleIdentifier);
  application.regular = running.activationPolicy == NSApplicationActivationPolicyRegular;
  return application;
}

}  // namespace

void inPool(const std::function<void()>& action) {
  // Without it all that the frameworks leave to a pool would stay until the process ends.
  @autoreleasepool {
    action();
  }
}

void inCycle(const std::function<void()>& cycle) {
  inPool(cycle);
}

std::vector<Application> runningApplications() {
  std::vector<Application> applications;
  for (NSRunningApplication* running in NSWorkspace.sharedWorkspace.runningApplications) {
    const std::optional<Application> application = applicationOf(running);
    if (!application) continue;
    // While a process id passes to another process the list may have both.
    const bool known = std::ranges::any_of(
        applications, [&](const Application& other) { return other.pid == application->pid; });
    if (!known) applications.push_back(*application);
  }
  return applications;
}

std::optional<Application> runningApplication(std::int32_t pid) {
  return applicationOf([NSRunningApplication runningApplicationWithProcessIdentifier:pid]);
}

std::optional<Application> frontmostApplication() {
  return applicationOf(NSWorkspace.sharedWorkspace.frontmostApplication);
}

double systemUptime() {
  @autoreleasepool {
    return NSProcessInfo.processInfo.systemUptime;
  }
}

bool systemIsAtLeast(long major, long minor) {
  return [NSProcessInfo.processInfo isOperatingSystemAtLeastVersion:{major, minor, 0}];
}

}  // namespace callmonitor::platform
