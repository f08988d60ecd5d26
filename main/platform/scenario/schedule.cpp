#include "platform/scenario/schedule.h"

#include <algorithm>
#include <tuple>

namespace callmonitor::scenario {
namespace {

// Virtual times are sums of delays, which binary fractions do not hit exactly: a step that is due
// within a microsecond is due.
constexpr double grace = 1e-6;

bool later(const Schedule::Pending& left, const Schedule::Pending& right) {
  return std::tie(left.at, left.step) > std::tie(right.at, right.step);
}

}  // namespace

Schedule scheduleOf(const Scenario& scenario) {
  Schedule schedule;
  for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
    schedule.pending.push_back({scenario.steps[i].at, i});
  }
  std::ranges::make_heap(schedule.pending, later);
  return schedule;
}

std::optional<double> nextTime(const Schedule& schedule) {
  return schedule.pending.empty() ? std::nullopt : std::optional(schedule.pending.front().at);
}

std::optional<DueStep> takeDue(Schedule& schedule, const Scenario& scenario, double time) {
  std::vector<Schedule::Pending>& pending = schedule.pending;
  if (pending.empty() || pending.front().at > time + grace) return std::nullopt;
  std::ranges::pop_heap(pending, later);
  const Schedule::Pending taken = pending.back();
  pending.pop_back();
  const Step& step = scenario.steps[taken.step];
  if (step.every && taken.at + *step.every <= step.until + grace) {
    pending.push_back({taken.at + *step.every, taken.step});
    std::ranges::push_heap(pending, later);
  }
  return DueStep{taken.at, &step};
}

}  // namespace callmonitor::scenario
