// Timers on the main run loop. The workspace learns of applications that come and go only while
// this loop runs, so nothing here ever sleeps.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>

#include "platform/macos/owned.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

using Action = std::function<void()>;

void fire(CFRunLoopTimerRef /*timer*/, void* info) {
  (*static_cast<const Action*>(info))();
}

void forget(const void* info) {
  delete static_cast<const Action*>(info);
}

}  // namespace

void afterDelay(double seconds, std::function<void()> action) {
  auto owned = std::make_unique<Action>(std::move(action));
  // Without a way to retain it, the action is the timer's alone and goes with it.
  CFRunLoopTimerContext context{0, owned.get(), nullptr, forget, nullptr};
  const auto timer = Owned<CFRunLoopTimerRef>::taken(
      CFRunLoopTimerCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + seconds,
                           /*interval=*/0, /*flags=*/0, /*order=*/0, fire, &context));
  if (!timer) {
    // A monitor without its next timer would end as if all were well.
    std::fputs("call-monitor: the run loop cannot set a timer\n", stderr);
    std::abort();
  }
  static_cast<void>(owned.release());
  CFRunLoopAddTimer(CFRunLoopGetMain(), timer.get(), kCFRunLoopDefaultMode);
}

void runLoop() {
  // Returns when no timer is left.
  CFRunLoopRun();
}

}  // namespace callmonitor::platform
