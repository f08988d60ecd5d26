// How other sources of events of this platform join the program's one run loop. What is set here
// never keeps runLoop() from ending: only the program's own timers do.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace callmonitor::platform {

struct LoopSource;
struct EndLoopSource {
  void operator()(LoopSource* source) const;
};
// One source of events, for as long as the handle lives. An action may end the source that called
// it.
using LoopSourceHandle = std::unique_ptr<LoopSource, EndLoopSource>;

// Calls `ready` whenever the descriptor is ready for any of `events` (EPOLLIN, EPOLLOUT), has hung
// up or has failed. The handle must go before a closed descriptor's number can be another's. Null
// when the kernel has no room for it: the caller then learns what is new only when it looks by
// itself.
[[nodiscard]] LoopSourceHandle watchDescriptor(int descriptor, std::uint32_t events,
                                               std::function<void()> ready);

// Calls `action` every `period` seconds, for the first time one period from now. Null when no timer
// can be had.
[[nodiscard]] LoopSourceHandle everySeconds(double period, std::function<void()> action);

}  // namespace callmonitor::platform
