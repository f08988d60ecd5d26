// The system's version and pools of the system's objects, for the sources that are plain C++.
#pragma once

#include <functional>

namespace callmonitor::platform {

// Whether the operating system is of this version or a later one.
[[nodiscard]] bool systemIsAtLeast(long major, long minor);

// Runs `action` once, at once. What the frameworks leave to a pool meanwhile goes at its end.
void inPool(const std::function<void()>& action);

}  // namespace callmonitor::platform
