// The stream's way out, where the system is a POSIX one.
#pragma once

namespace callmonitor::platform {

// Makes a reader that goes away end the process, and a slow one delay a line instead of cutting it,
// whatever the parent process left behind.
void prepareStandardOutput();

}  // namespace callmonitor::platform
