// The running applications: those that registered for accessibility, and those that own a window.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility_bus.h"
#include "platform/linux/x11.h"

namespace callmonitor::platform {

// An application in the accessibility registry.
struct RegisteredApplication {
  ObjectName root;
  std::int32_t pid = 0;
};

// A process's identity does not change while it lives; reading it again each time would be waste.
struct KnownIdentity {
  std::uint64_t startTicks = 0;
  std::optional<std::string> bundle;
};

// The last lists that could be read. A registry or window server that is silent for a moment must
// not make living applications look as if they had ended.
struct ApplicationMemory {
  std::uint64_t generation = 0;
  std::vector<RegisteredApplication> registered;
  std::map<std::string, std::int32_t> processOfBusName;
  std::vector<ClientWindow> windows;
  std::map<std::int32_t, KnownIdentity> identities;
};

struct Desktop;

// The registered application of a process; absent when it did not register, so that its tree
// cannot be read though it runs.
[[nodiscard]] std::optional<ObjectName> registeredRoot(Desktop& desktop, std::int32_t pid);

}  // namespace callmonitor::platform
