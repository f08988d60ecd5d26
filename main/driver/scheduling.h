// Runs cycles one after another on the run loop.
#pragma once

#include "driver/cycle_state.h"

namespace callmonitor {

// Runs one cycle at once and arms a one-shot timer for the next, which does the same: cycles never
// overlap, and there is never more than one timer. What `state` refers to must
// outlive the run loop.
void scheduleReports(const CycleState& state);

}  // namespace callmonitor
