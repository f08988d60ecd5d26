// Timers on the main run loop. The workspace learns of applications that come and go only while
// this loop runs, so nothing here ever sleeps.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>

#include "platform/macos/owned.h"
#include "platform/macos/workspace.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

using Action = std::function<void()>;

// A pass of the run loop ends with the first message that it handles. Timers do not end it, so it
// takes no longer than this many seconds in any case, and what they left behind goes then.
constexpr CFTimeInterval longestPass = 60;

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

// Between cycles the system calls its own functions back, as when it tells the workspace of an
// application that comes or goes. A program without an application object has no pool for what
// those leave, unless it makes one.
void runLoop() {
  CFRunLoopRunResult result = kCFRunLoopRunFinished;
  do {
    inPool([&] {
      result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, longestPass,
                                  /*returnAfterSourceHandled=*/1);
    });
    // Neither the end of a pass nor somebody else's stop ends the monitor. The loop is finished
    // when it has neither timer nor source; once the workspace was asked, its source is always
    // there.
  } while (result != kCFRunLoopRunFinished);
}

}  // namespace callmonitor::platform
