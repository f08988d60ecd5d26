// Looks once at everything that the monitor looks at, and changes nothing.
#pragma once

#include <cstddef>
#include <functional>

#include "doctor/findings.h"

namespace callmonitor::doctor {

// No more windows of one application are looked at.
inline constexpr std::size_t windowLimit = 50;

// Seconds after which no further window of an application is opened: a report is wanted also of a
// desktop on which something hangs.
inline constexpr double applicationBudget = 2.0;

// Seconds that a desktop gets, at most, to learn who captures and plays, and between two looks
// whether it has.
inline constexpr double audioPatience = 1.0;
inline constexpr double audioPeriod = 0.1;

// The desktop as it is now. Never sets anything; what cannot be read is absent or has its code.
[[nodiscard]] Findings examine();

// Prepares for looking, waits on the run loop until the sound is known or `audioPatience` is over,
// and gives what is found then to `told`. Needs a run loop to be run after it.
void visit(std::function<void(const Findings&)> told);

}  // namespace callmonitor::doctor
