// What else of this platform asks the system's objects, as plain values.
#pragma once

namespace callmonitor::platform {

// Whether the operating system is of this version or a later one.
[[nodiscard]] bool systemIsAtLeast(long major, long minor);

}  // namespace callmonitor::platform
