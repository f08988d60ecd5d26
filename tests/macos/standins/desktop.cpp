#include "macos/standins/desktop.h"

#include <algorithm>
#include <type_traits>
#include <variant>

namespace callmonitor::standins {
namespace {

// A cycle that would start at the scenario's end is not run. Times are sums that binary fractions
// do not hit exactly, so one that starts this close to it counts as being there.
constexpr double endGrace = 1e-6;

void carryOut(scenario::World& world, const std::vector<scenario::Change>& changes) {
  for (const scenario::Change& change : changes) {
    const auto refusal = apply(world, change);
    if (refusal) refuse(change.origin + ": " + *refusal);
  }
}

void noteTouched(Desktop& here) {
  for (const std::string& key : here.world.touched) {
    if (here.world.elements.contains(key)) {
      here.answers[key] = answersOf(here.world, key);
    } else {
      here.answers.erase(key);
    }
  }
  here.world.touched.clear();
}

}  // namespace

Desktop& desktop() {
  static Desktop current;
  return current;
}

void reset() {
  for (Object* timer : std::exchange(desktop().timers, {})) {
    const auto& context = std::get<Timer>(timer->payload).context;
    if (context.release != nullptr) context.release(context.info);
    drop(timer);
  }
  desktop() = Desktop();
}

void play(const scenario::Scenario& scenario) {
  reset();
  Desktop& here = desktop();
  here.scenario = scenario;
  here.schedule = scheduleOf(here.scenario);
  here.runUntil = scenario::startUptime + scenario.end - endGrace;
  carryOut(here.world, here.scenario.opening);
  noteTouched(here);
  refreshWorkspace();
}

void arrive(std::string_view function) {
  Desktop& here = desktop();
  if (const auto delay = here.delays.find(function); delay != here.delays.end()) {
    advance(delay->second);
  }
  const double seconds = here.uptime - scenario::startUptime;
  const std::optional<double> next = nextTime(here.schedule);
  if (!next || *next > seconds + endGrace) return;
  while (const auto due = takeDue(here.schedule, here.scenario, seconds)) {
    here.world.seconds = due->at;
    carryOut(here.world, due->step->changes);
  }
  noteTouched(here);
}

void advance(double seconds) {
  desktop().uptime += seconds;
}

void refreshWorkspace() {
  Desktop& here = desktop();
  here.applications.clear();
  for (const auto& running : here.world.applications) {
    here.applications.push_back(running.application);
  }
  const scenario::WorldApplication* front = frontOf(here.world);
  here.front = front == nullptr ? std::nullopt : std::optional(front->application);
}

Object* objectOf(const scenario::Value& value) {
  return std::visit(
      [](const auto& held) -> Object* {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::string>) {
          return madeText(held);
        } else if constexpr (std::is_same_v<Held, platform::Address>) {
          return madeUrl(held.text, held.text);
        } else if constexpr (std::is_same_v<Held, bool>) {
          return flagObject(held);
        } else if constexpr (std::is_same_v<Held, scenario::Reference>) {
          return made(ElementHandle{held.name});
        } else if constexpr (std::is_same_v<Held, std::vector<scenario::Reference>>) {
          std::vector<Object*> elements;
          elements.reserve(held.size());
          for (const auto& reference : held)
            elements.push_back(made(ElementHandle{reference.name}));
          return madeList(elements);
        } else if constexpr (std::is_same_v<Held, platform::OtherType>) {
          return madeNumber(7);
        } else {
          return nullptr;
        }
      },
      value);
}

}  // namespace callmonitor::standins
