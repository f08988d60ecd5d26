// Timers. The loop is sd-event's, so that a later source of events can join it.
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

}  // namespace

void afterDelay(double seconds, std::function<void()> action) {
  RunLoop& loop = runLoopState();
  auto owned = std::make_unique<Action>(std::move(action));
  sd_event_source* source = nullptr;
  // Counted from this moment: the loop's own "now" is when the cycle that is ending began.
  const double due = systemUptime() + std::max(seconds, 0.0);
  const int result =
      sd_event_add_time(loop.events, &source, CLOCK_MONOTONIC,
                        static_cast<std::uint64_t>(due * 1e6), accuracy, fire, owned.get());
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
