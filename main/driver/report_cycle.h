// One observation cycle of monitoring mode.
#pragma once

#include "driver/cycle_state.h"

namespace callmonitor {

// No application's tree is opened later than this after a cycle's start, in uptime seconds.
inline constexpr double cycleBudget = 1.2;

// The scan offset starts again from 0 here, whatever the number of applications.
inline constexpr long scanOffsetModulus = 1'000'000;

// Looks at every application that could hold a meeting, applies what was seen to the tracker and
// writes the observations, what the client in front does, and one health record. Returns how many
// seconds after this cycle's start the next one should start. Nothing that an application does can
// make it fail.
double report(const CycleState& state);

}  // namespace callmonitor
