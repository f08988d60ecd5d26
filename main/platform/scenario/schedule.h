// In which order a scenario's steps happen.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/scenario/scenario.h"

namespace callmonitor::scenario {

// The steps of one scenario that are still to happen.
struct Schedule {
  struct Pending {
    double at = 0;         // seconds from the start
    std::size_t step = 0;  // its place in the file
  };
  std::vector<Pending> pending;  // a heap, the next one first
};

struct DueStep {
  double at = 0;  // the time it was meant for, in seconds from the start
  const Step* step = nullptr;
};

[[nodiscard]] Schedule scheduleOf(const Scenario& scenario);

// When the next step happens, in seconds from the start; absent when none is left.
[[nodiscard]] std::optional<double> nextTime(const Schedule& schedule);

// Takes the next step that is due at `time` (seconds from the start). Steps come in order of time,
// those of one time in order of the file. Absent when none is due.
std::optional<DueStep> takeDue(Schedule& schedule, const Scenario& scenario, double time);

}  // namespace callmonitor::scenario
