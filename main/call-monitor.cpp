// The entry point: the argument list picks a built-in check, which runs to completion, or
// monitoring, which runs until the process is killed.
#include <cstdio>
#include <string>
#include <vector>

#include "command_line.h"
#include "driver/scheduling.h"
#include "fixtures/client_fixture.h"
#include "fixtures/identity_probe.h"
#include "platform/platform.h"
#include "process_state.h"

namespace {

using callmonitor::CommandLine;
using callmonitor::Mode;

// The status of a mode that this build does not have ("internal software error" by convention).
constexpr int notBuiltStatus = 70;

int monitor() {
  callmonitor::ProcessState state;
  callmonitor::platform::prepareMonitoring();
  callmonitor::scheduleReports(state);
  callmonitor::platform::runLoop();
  return 0;
}

int run(const CommandLine& commandLine) {
  switch (commandLine.mode) {
    case Mode::clientFixture:
      callmonitor::clientFixture();
      return 0;
    case Mode::identity:
      callmonitor::identityProbe(commandLine.values.front());
      return 0;
    case Mode::monitoring:
      return monitor();
    default:
      std::fputs("call-monitor: this mode is not built yet\n", stderr);
      return notBuiltStatus;
  }
}

}  // namespace

int main(int argc, char** argv) {
  return run(callmonitor::commandLine(std::vector<std::string>(argv, argv + argc)));
}
