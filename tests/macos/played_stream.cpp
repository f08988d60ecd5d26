// Plays scenarios on the stand-ins of the system frameworks, with the balance of references looked
// at after every cycle.
#include "scenarios/played_stream.h"

#include <gtest/gtest.h>

#include "driver/scheduling.h"
#include "macos/balance.h"
#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"
#include "process_state.h"
#include "support/emitted_records.h"

namespace callmonitor::scenarios {

std::vector<std::string> playedStream(const scenario::Scenario& scenario) {
  std::vector<std::string> lines = support::linesWrittenBy([&] {
    standins::play(scenario);
    ProcessState state;
    standins::desktop().afterTimer = [&state] { macos::expectBalance(state, 1); };
    platform::prepareMonitoring();
    scheduleReports(state.cycleState());
    macos::expectBalance(state, 0);
    platform::runLoop();
  });
  EXPECT_EQ(standins::desktop().messagesWithoutTimeout, 0)
      << "messages that might have hung for seconds";
  standins::reset();
  EXPECT_EQ(standins::heldReferences(), 0);
  EXPECT_EQ(standins::livingObjects(), 0);
  return lines;
}

}  // namespace callmonitor::scenarios
