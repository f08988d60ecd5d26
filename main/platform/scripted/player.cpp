#include "platform/scripted/player.h"

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "platform/scenario/schedule.h"
#include "platform/scenario/world.h"
#include "platform/scripted/desktop.h"

namespace callmonitor::scripted {
namespace {

using scenario::Change;
using scenario::Reference;

// A cycle that would start at the scenario's end is not run. Virtual times are sums that binary
// fractions do not hit exactly, so one that starts this close to it counts as being there.
constexpr double endGrace = 1e-6;

struct Play {
  scenario::Scenario scenario;
  scenario::World world;
  scenario::Schedule schedule;
};

platform::ValueOf<platform::Element> handles(const scenario::Value& value) {
  return std::visit(
      [](const auto& held) -> platform::ValueOf<platform::Element> {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, Reference>) {
          return element(held.name);
        } else if constexpr (std::is_same_v<Held, std::vector<Reference>>) {
          std::vector<platform::Element> elements;
          elements.reserve(held.size());
          for (const Reference& reference : held) elements.push_back(element(reference.name));
          return elements;
        } else {
          return held;
        }
      },
      value);
}

void carryOut(scenario::World& world, const std::vector<Change>& changes) {
  for (const Change& change : changes) {
    const auto refusal = apply(world, change);
    if (!refusal) continue;
    std::fprintf(stderr, "scripted desktop: %s: %s\n", change.origin.c_str(), refusal->c_str());
    std::abort();
  }
}

// Brings the desktop to where the world is. Only what was touched is written again, so that a
// change costs what it changes.
void show(scenario::World& world) {
  Desktop& shown = desktop();
  for (const std::string& key : world.touched) {
    if (!world.elements.contains(key)) {
      shown.elements.erase(key);
      continue;
    }
    Attributes attributes;
    for (const auto& [name, answer] : answersOf(world, key)) {
      attributes[name] = {{answer.reading.code, handles(answer.reading.value)}, answer.delay};
    }
    shown.elements[key] = std::move(attributes);
  }
  world.touched.clear();

  shown.applications.clear();
  shown.delays.clear();
  for (const scenario::WorldApplication& application : world.applications) {
    shown.applications.push_back(application.application);
    if (application.delay > 0) shown.delays[application.key] = application.delay;
  }
  const scenario::WorldApplication* front = frontOf(world);
  shown.front = front == nullptr ? std::nullopt : std::optional(front->application.pid);
  shown.trusted = world.trusted;
  shown.audio = world.audio;
  shown.windows = screenOf(world);
}

void setNextChange(const Play& play) {
  const std::optional<double> next = nextTime(play.schedule);
  desktop().nextChange =
      next ? scenario::startUptime + *next - endGrace : std::numeric_limits<double>::infinity();
}

void changeDesktop(Play& play) {
  const double seconds = desktop().uptime - scenario::startUptime;
  while (const auto due = takeDue(play.schedule, play.scenario, seconds)) {
    play.world.seconds = due->at;
    carryOut(play.world, due->step->changes);
  }
  show(play.world);
  setNextChange(play);
}

}  // namespace

void play(const scenario::Scenario& scenario) {
  reset();
  const auto state = std::make_shared<Play>(Play{scenario, {}, scheduleOf(scenario)});
  desktop().uptime = scenario::startUptime;
  desktop().wallClock = scenario::startWallClock;
  desktop().runUntil = scenario::startUptime + scenario.end - endGrace;
  desktop().strict = true;
  desktop().recordCalls = false;
  carryOut(state->world, scenario.opening);
  show(state->world);
  setNextChange(*state);
  desktop().change = [state] { changeDesktop(*state); };
}

}  // namespace callmonitor::scripted
