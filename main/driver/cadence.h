// When the next cycle starts, and in which order a cycle looks at applications. Times are seconds
// of system uptime.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "tracking/call_records.h"

namespace callmonitor {

inline constexpr double idleScanInterval = 1.0;       // from cycle start to cycle start
inline constexpr double suspectedScanInterval = 0.5;  // the same in fast mode
inline constexpr double suspectedScanWindow = 30.0;   // fast mode after the last change in front
inline constexpr double minimumScanGap = 0.1;         // from cycle end to the next start, at least

struct ScanCadence {
  std::optional<std::int32_t> lastPID;   // the process in front at the end of the last cycle
  std::optional<std::string> lastFront;  // the fingerprint last seen for that process
  // Fast mode is on while the uptime is below this.
  double fastUntil = -std::numeric_limits<double>::infinity();

  // The wanted period, asked for at the end of every cycle. `pid` is the process in front, `front`
  // the fingerprint of what it shows, `tracked` whether any call goes on. A new fingerprint starts
  // fast mode; another process in front ends it; a tracked call suspends it.
  double interval(std::optional<std::int32_t> pid, const std::optional<std::string>& front,
                  bool tracked, double now);
};

// How long after a cycle the next one starts, for a period measured from start to start: `interval`
// less the `elapsed` time of the cycle, but no less than `minimumScanGap`.
[[nodiscard]] double nextScanDelay(double interval, double elapsed);

// The rank of an application within a cycle, lower first: a native meeting client in front, then
// whatever has a tracked call, then the rest.
[[nodiscard]] int scanPriority(std::string_view bundleID, bool tracked, bool frontmost);

// The fingerprint of the meeting surfaces that the application in front shows, which stays the same
// as long as they do. Absent without a sample, while a call is tracked, and when nothing is shown
// but generic surfaces and surfaces already left.
[[nodiscard]] std::optional<std::string> suspectedFront(const AppSample* sample, bool tracked);

}  // namespace callmonitor
