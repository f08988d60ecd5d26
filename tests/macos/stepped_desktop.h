// Steps the monitor over a desktop behind the stand-ins of the system frameworks.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "driver/report_cycle.h"
#include "macos/balance.h"
#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"
#include "platform/platform.h"
#include "platform/scenario/loader.h"
#include "process_state.h"
#include "support/emitted_records.h"

namespace callmonitor::macos {

using standins::desktop;
using standins::Object;
using support::Json;

// A scenario that stands in a test.
inline scenario::Scenario written(const std::string& text) {
  const scenario::Loaded loaded = scenario::parseScenario(
      text, [](const std::string&) { return std::optional<std::string>(); });
  EXPECT_TRUE(loaded.scenario.has_value()) << loaded.error;
  return loaded.scenario.value_or(scenario::Scenario());
}

using Words = std::vector<std::string>;

// The sound system's processes in words, "absent" where there is no list.
inline Words sounds() {
  Words words;
  const long held = standins::heldReferences();
  platform::inCycle([&] {
    const auto processes = platform::audioProcesses();
    if (!processes) words.emplace_back("absent");
    for (const auto& process : processes.value_or(std::vector<platform::AudioProcess>())) {
      words.push_back(process.bundle + (process.input ? " in" : "") +
                      (process.output ? " out" : ""));
    }
  });
  EXPECT_EQ(standins::heldReferences(), held);
  return words;
}

// A desktop per test, which leaves nothing behind.
struct SteppedDesktop : testing::Test {
  std::optional<ProcessState> state{std::in_place};

  SteppedDesktop() { standins::reset(); }
  ~SteppedDesktop() override {
    state.reset();
    standins::reset();
    EXPECT_EQ(standins::heldReferences(), 0);
    EXPECT_EQ(standins::livingObjects(), 0);
    EXPECT_EQ(standins::openPools(), 0U);
  }

  // Begins anew, with nothing remembered.
  void play(const std::string& text) {
    state.emplace();
    standins::play(written(text));
  }

  // One cycle, in which every client and client scan is written; afterwards the clock moves on.
  std::vector<Json> cycle() {
    state->gates = {};
    std::vector<Json> records = support::recordsWrittenBy(
        [this] { platform::inCycle([this] { (void)report(state->cycleState()); }); });
    expectBalance(*state, 0);
    standins::advance(1);
    return records;
  }
};

}  // namespace callmonitor::macos
