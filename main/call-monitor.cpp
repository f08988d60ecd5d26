// The entry point: the argument list picks a built-in check, which runs to completion, or
// monitoring, which runs until the process is killed.
#include <string>
#include <vector>

#include "command_line.h"
#include "driver/scheduling.h"
#include "fixtures/call_ending_fixture.h"
#include "fixtures/client_fixture.h"
#include "fixtures/identity_probe.h"
#include "fixtures/scan_fixtures.h"
#include "fixtures/self_test.h"
#include "fixtures/tracker_fixtures.h"
#include "platform/platform.h"
#include "process_state.h"

namespace {

using callmonitor::CommandLine;
using callmonitor::Mode;

// The provider whose call ends where the command line names none.
constexpr const char* defaultProvider = "meet";

int monitor() {
  callmonitor::ProcessState state;
  callmonitor::platform::prepareMonitoring();
  callmonitor::scheduleReports(state.cycleState());
  callmonitor::platform::runLoop();
  return 0;
}

int endCall(const std::vector<std::string>& values) {
  const std::string provider = values.size() > 1 ? values[1] : defaultProvider;
  return callmonitor::callEndingFixture(values.front(), provider) ? 0 : 1;
}

int run(const CommandLine& commandLine) {
  switch (commandLine.mode) {
    case Mode::genericExitFixture:
      callmonitor::genericExitFixture();
      return 0;
    case Mode::nativeIdentityFixture:
      callmonitor::nativeIdentityFixture();
      return 0;
    case Mode::clientFixture:
      callmonitor::clientFixture();
      return 0;
    case Mode::providerRootFixture:
      callmonitor::providerRootFixture();
      return 0;
    case Mode::zoomAudioHelpFixture:
      callmonitor::zoomAudioHelpFixture();
      return 0;
    case Mode::clientScanFixture:
      callmonitor::clientScanFixture();
      return 0;
    case Mode::identity:
      callmonitor::identityProbe(commandLine.values.front());
      return 0;
    case Mode::mediaGateFixture:
      callmonitor::mediaGateFixture();
      return 0;
    case Mode::callEndingFixture:
      return endCall(commandLine.values);
    case Mode::selfTest:
      callmonitor::selfTest();
      return 0;
    case Mode::monitoring:
      break;
  }
  return monitor();
}

}  // namespace

int main(int argc, char** argv) {
  return run(callmonitor::commandLine(std::vector<std::string>(argv, argv + argc)));
}
