// The running applications: those that registered for accessibility, and those that own a window.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/accessibility_bus.h"

namespace callmonitor::platform {

struct Desktop;

// The registered application of a process; absent when it did not register, so that its tree
// cannot be read though it runs.
[[nodiscard]] std::optional<ObjectName> registeredRoot(Desktop& desktop, std::int32_t pid);

}  // namespace callmonitor::platform
