// Timers, and the descriptors of this platform's other files. The loop is sd-event's.
#include "platform/linux/run_loop.h"

#include <systemd/sd-event.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// A timer may come late by this much; the library's own default of a quarter second would show.
constexpr std::uint64_t accuracy = 1000;  // microseconds

// A monitor without its next timer would end as if all were well, or stand still for ever.
[[noreturn]] void giveUp(const char* attempt, int result) {
  std::fprintf(stderr, "call-monitor: the run loop cannot %s: %s\n", attempt,
               std::strerror(-result));
  std::abort();
}

struct RunLoop {
  sd_event* events = nullptr;
  std::size_t pending = 0;

  RunLoop() {
    if (const int result = sd_event_new(&events); result < 0) giveUp("start", result);
  }
  ~RunLoop() { sd_event_unref(events); }
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;
};

RunLoop& runLoopState() {
  static RunLoop loop;
  return loop;
}

using Action = std::function<void()>;

int fire(sd_event_source* source, std::uint64_t /*due*/, void* data) {
  const std::unique_ptr<Action> action(static_cast<Action*>(data));
  --runLoopState().pending;
  sd_event_source_disable_unref(source);
  (*action)();
  return 0;
}

std::uint64_t microsecondsFromNow(double seconds) {
  return static_cast<std::uint64_t>((systemUptime() + seconds) * 1e6);
}

}  // namespace

struct LoopSource {
  sd_event_source* source = nullptr;
  // Shared with the call that is being made, which may end the source.
  std::shared_ptr<const Action> action;
  double period = 0;  // seconds; of a timer only

  LoopSource() = default;
  ~LoopSource() { sd_event_source_disable_unref(source); }
  LoopSource(const LoopSource&) = delete;
  LoopSource& operator=(const LoopSource&) = delete;
};

namespace {

LoopSourceHandle madeSource(std::function<void()> action) {
  LoopSourceHandle made(new LoopSource);
  made->action = std::make_shared<const Action>(std::move(action));
  return made;
}

int descriptorReady(sd_event_source* /*source*/, int /*descriptor*/, std::uint32_t /*events*/,
                    void* data) {
  const auto action = static_cast<LoopSource*>(data)->action;
  (*action)();
  return 0;
}

int periodOver(sd_event_source* source, std::uint64_t /*due*/, void* data) {
  const auto* made = static_cast<LoopSource*>(data);
  const auto action = made->action;
  // Set before the action, which may end the source; from now, so that a loop that was held up does
  // not make up for what it missed.
  sd_event_source_set_time(source, microsecondsFromNow(made->period));
  sd_event_source_set_enabled(source, SD_EVENT_ONESHOT);
  (*action)();
  return 0;
}

}  // namespace

void EndLoopSource::operator()(LoopSource* source) const {
  delete source;
}

LoopSourceHandle watchDescriptor(int descriptor, std::uint32_t events,
                                 std::function<void()> ready) {
  LoopSourceHandle made = madeSource(std::move(ready));
  if (sd_event_add_io(runLoopState().events, &made->source, descriptor, events, descriptorReady,
                      made.get()) < 0) {
    return nullptr;
  }
  return made;
}

LoopSourceHandle everySeconds(double period, std::function<void()> action) {
  LoopSourceHandle made = madeSource(std::move(action));
  made->period = period;
  if (sd_event_add_time(runLoopState().events, &made->source, CLOCK_MONOTONIC,
                        microsecondsFromNow(period), accuracy, periodOver, made.get()) < 0) {
    return nullptr;
  }
  return made;
}

void afterDelay(double seconds, std::function<void()> action) {
  RunLoop& loop = runLoopState();
  auto owned = std::make_unique<Action>(std::move(action));
  sd_event_source* source = nullptr;
  // Counted from this moment: the loop's own "now" is when the cycle that is ending began.
  const int result =
      sd_event_add_time(loop.events, &source, CLOCK_MONOTONIC,
                        microsecondsFromNow(std::max(seconds, 0.0)), accuracy, fire, owned.get());
  if (result < 0) giveUp("set a timer", result);
  // The source carries the action now, until it fires.
  static_cast<void>(owned.release());
  ++loop.pending;
}

void runLoop() {
  RunLoop& loop = runLoopState();
  constexpr auto forever = std::numeric_limits<std::uint64_t>::max();
  while (loop.pending > 0) {
    if (const int result = sd_event_run(loop.events, forever); result < 0) giveUp("wait", result);
  }
}

}  // namespace callmonitor::platform
