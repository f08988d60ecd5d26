// The call tracker: turns the samples of one tick into what is said of each call. A call opens when
// a surface shows it joined and ends when a surface says so, when its process is gone, or when its
// absence is certain twice in a row. Everything else that hides a call is "unknown".
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tracking/call_records.h"

namespace callmonitor {

// Consecutive counted absences that end a call: one flicker of an accessibility tree must not.
inline constexpr std::int64_t missingThreshold = 2;

struct Tracker {
  // By conference key; both passes follow this order.
  std::map<std::string, Call> calls;

  // Applies one tick. `samples` are the sampled applications in the cycle's order; `trusted` says
  // whether trees could be read at all. Observations come in the order in which they were made: one
  // for every call that was open, and one for every call that opens.
  std::vector<Observation> apply(const std::vector<AppSample>& samples, bool trusted);

  // Whether some call belongs to this process id.
  [[nodiscard]] bool tracks(std::int32_t pid) const;
};

}  // namespace callmonitor
