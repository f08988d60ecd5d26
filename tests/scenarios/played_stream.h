// What a scenario's desktop makes the monitor write. Each platform's tests bring their own
// implementation and share everything else.
#pragma once

#include <string>
#include <vector>

#include "platform/scenario/scenario.h"

namespace callmonitor::scenarios {

// The lines that the monitor writes from the scenario's start to its end.
[[nodiscard]] std::vector<std::string> playedStream(const scenario::Scenario& scenario);

}  // namespace callmonitor::scenarios
