// The main run loop and its timers, on the desktop's clock.
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"

namespace callmonitor::standins {
namespace {

// A date of this clock resolves tenths of a microsecond only, so intervals are kept in whole ones.
constexpr double ticksPerSecond = 1e6;

double now1970() {
  return scenario::startWallClock + (desktop().uptime - scenario::startUptime);
}

double dueOf(const Object* timer) {
  return std::get<Timer>(timer->payload).due;
}

// A timer that is over gives up what it was made with.
void invalidate(Object* timer) {
  const CFRunLoopTimerContext context = std::get<Timer>(timer->payload).context;
  if (context.release != nullptr) context.release(context.info);
  drop(timer);
}

void waitUntil(double time) {
  if (time > desktop().uptime) advance(time - desktop().uptime);
  arrive("");
}

// The source of the workspace, which has something to tell before every timer unless it is quiet.
void noticeWorkspace() {
  refreshWorkspace();
  keepInPool(made(Geometry{}));
  desktop().workspaceNoticed = true;
}

void fire(Object* timer) {
  const Timer fired = std::get<Timer>(timer->payload);
  desktop().workspaceNoticed = false;
  fired.callOut(reinterpret_cast<CFRunLoopTimerRef>(timer), fired.context.info);
  invalidate(timer);
  if (desktop().afterTimer) desktop().afterTimer();
}

Object* mainLoop() {
  static Object* const loop = constant(RunLoop{});
  return loop;
}

}  // namespace
}  // namespace callmonitor::standins

using namespace callmonitor::standins;

extern "C" {

const CFRunLoopMode kCFRunLoopDefaultMode =
    reinterpret_cast<CFRunLoopMode>(constant(Text{u"kCFRunLoopDefaultMode"}));

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
  return now1970() - kCFAbsoluteTimeIntervalSince1970;
}

CFRunLoopRef CFRunLoopGetMain() {
  return reinterpret_cast<CFRunLoopRef>(mainLoop());
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags flags, CFIndex order,
                                       CFRunLoopTimerCallBack callOut,
                                       CFRunLoopTimerContext* context) {
  requireDefault(allocator);
  if (flags != 0 || order != 0) refuse("a timer's flags and order have to be 0");
  if (desktop().timersFail) return nullptr;
  if (interval != 0) refuse("a timer that repeats was made");
  const double delay =
      std::round((fireDate - CFAbsoluteTimeGetCurrent()) * ticksPerSecond) / ticksPerSecond;
  Timer timer{desktop().uptime + std::max(delay, 0.0), callOut, *context};
  if (context->retain != nullptr) context->retain(context->info);
  return static_cast<CFRunLoopTimerRef>(const_cast<void*>(handedOut(made(timer))));
}

void CFRunLoopAddTimer(CFRunLoopRef loop, CFRunLoopTimerRef timer, CFRunLoopMode mode) {
  (void)usedAs<RunLoop>(loop);
  if (mode != kCFRunLoopDefaultMode) refuse("a timer was added in another mode than the default");
  (void)usedAs<Timer>(timer);
  Object* object = &used(timer);
  keep(object);
  desktop().timers.push_back(object);
}

// Like the real one it is ended by a source and not by a timer.
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled) {
  if (mode != kCFRunLoopDefaultMode) refuse("the loop was run in another mode than the default");
  const double end = desktop().uptime + seconds;
  if (desktop().stops > 0) {
    --desktop().stops;
    return kCFRunLoopRunStopped;
  }
  while (true) {
    auto& timers = desktop().timers;
    const auto next = std::ranges::min_element(timers, {}, dueOf);
    if (next == timers.end() || dueOf(*next) > desktop().runUntil) return kCFRunLoopRunFinished;
    if (dueOf(*next) > end) {
      waitUntil(end);
      return kCFRunLoopRunTimedOut;
    }
    waitUntil(dueOf(*next));
    if (!desktop().workspaceNoticed && !desktop().workspaceQuiet) {
      noticeWorkspace();
      if (returnAfterSourceHandled != 0) return kCFRunLoopRunHandledSource;
      continue;
    }
    Object* timer = *next;
    timers.erase(next);
    fire(timer);
  }
}

}  // extern "C"
