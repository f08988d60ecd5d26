// What happens before the first cycle.
#include "platform/platform.h"
#include "platform/posix/standard_output.h"

namespace callmonitor::platform {

// Trust is granted in the system's settings and never asked for, so nothing else is to be prepared.
void prepareMonitoring() {
  prepareStandardOutput();
}

void prepareLooking() {
  prepareStandardOutput();
}

}  // namespace callmonitor::platform
