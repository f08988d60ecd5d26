// What is remembered of applications, and when it must be forgotten: a registry or a window server
// that is silent or begins anew must not make living applications look as if they had ended.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility_bus.h"
#include "platform/linux/known_applications.h"
#include "platform/linux/process_files.h"
#include "platform/linux/x11.h"
#include "platform/platform.h"

namespace callmonitor::platform {

// An application in the accessibility registry.
struct RegisteredApplication {
  ObjectName root;
  std::int32_t pid = 0;
};

// One launch that is no application.
struct Stranger {
  std::int32_t pid = 0;
  std::uint64_t startTicks = 0;
};

// The list of this cycle. It is as good as a new one for as long as the launches in it go on.
struct CycleList {
  std::uint64_t generation = 0;  // of the accessibility bus
  std::vector<Application> applications;
  // For whom this list was made anew, if it has not got him either.
  std::optional<Stranger> stranger;
};

struct ApplicationMemory {
  std::uint64_t generation = 0;  // of the accessibility bus
  std::vector<RegisteredApplication> registered;
  std::map<std::string, std::int32_t> processOfBusName;
  std::vector<ClientWindow> windows;  // the last list that could be read
  KnownApplications known;
  // Whether a list may be kept, and the one that is; both belong to one cycle.
  bool keepList = false;
  std::optional<CycleList> list;
};

// Whether the list was made for the launch that `look` shows, and in vain.
[[nodiscard]] bool isStranger(const CycleList& list, std::int32_t pid, const ProcessLook& look);

}  // namespace callmonitor::platform
