// Timers. The loop is sd-event's, so that a later source of events can join it.
#include <systemd/sd-event.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// A timer may come late by this much; the library's own default of a quarter second would show.
constexpr std::uint64_t accuracy = 1000;  // microseconds

struct RunLoop {
  sd_event* events = nullptr;
  std::size_t pending = 0;

  RunLoop() { sd_event_new(&events); }
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
  const double microseconds = seconds > 0 ? seconds * 1e6 : 0;
  const int result = sd_event_add_time_relative(loop.events, &source, CLOCK_MONOTONIC,
                                                static_cast<std::uint64_t>(microseconds), accuracy,
                                                fire, owned.get());
  if (result < 0) return;
  // The source carries the action now, until it fires.
  static_cast<void>(owned.release());
  ++loop.pending;
}

void runLoop() {
  RunLoop& loop = runLoopState();
  constexpr auto forever = std::numeric_limits<std::uint64_t>::max();
  while (loop.pending > 0 && sd_event_run(loop.events, forever) >= 0) {
  }
}

}  // namespace callmonitor::platform
