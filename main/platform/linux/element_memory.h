// What is remembered while an element is being read.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/accessible_object.h"

namespace callmonitor::platform {

// One message often answers several attributes. They are remembered for the element that is being
// read, until another element is read, an attribute is asked for a second time, or the cycle ends;
// failures are never remembered. So a walk sees what it would see with one message for each
// attribute, only faster.
struct ElementMemory {
  bool active = false;
  std::uint64_t generation = 0;
  ObjectName object;
  std::set<std::string, std::less<>> asked;
  std::optional<std::uint32_t> role;
  std::optional<std::uint64_t> states;
  std::optional<ObjectProperties> properties;
};

}  // namespace callmonitor::platform
