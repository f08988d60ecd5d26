#include "driver/scheduling.h"

#include "driver/cadence.h"
#include "driver/report_cycle.h"
#include "platform/platform.h"

namespace callmonitor {

void scheduleReports(const CycleState& state) {
  const double start = platform::systemUptime();
  double interval = idleScanInterval;
  platform::inCycle([&] { interval = report(state); });
  const double elapsed = platform::systemUptime() - start;
  platform::afterDelay(nextScanDelay(interval, elapsed), [state] { scheduleReports(state); });
}

}  // namespace callmonitor
