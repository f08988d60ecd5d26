// Plays scenarios on the desktop made of data.
#include "driver/scheduling.h"
#include "platform/scripted/player.h"
#include "process_state.h"
#include "scenarios/played_stream.h"
#include "support/emitted_records.h"

namespace callmonitor::scenarios {

std::vector<std::string> playedStream(const scenario::Scenario& scenario) {
  return support::linesWrittenBy([&] {
    scripted::play(scenario);
    ProcessState state;
    platform::prepareMonitoring();
    scheduleReports(state.cycleState());
    platform::runLoop();
  });
}

}  // namespace callmonitor::scenarios
