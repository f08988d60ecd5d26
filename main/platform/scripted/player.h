// Lets the scripted desktop play a scenario.
#pragma once

#include "platform/scenario/scenario.h"

namespace callmonitor::scripted {

// Starts a fresh desktop as the scenario opens, strict and without a record of calls. Its steps
// happen as virtual time passes, also in the middle of a cycle: before the first call on the seam
// that is made at or after their time. The run loop returns when nothing is due before the
// scenario's end.
//
// The scenario must have come from the loader, which has tried every change in it; one that cannot
// happen after all ends the process with a message.
void play(const scenario::Scenario& scenario);

}  // namespace callmonitor::scripted
