// What an element handle is on this desktop, and what is remembered while one is being read.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/accessible_object.h"
#include "platform/platform.h"

namespace callmonitor::platform {

// Identity is the connection and the object; the rest only says how to read it.
struct ElementReference {
  std::uint64_t generation = 0;  // of the accessibility bus
  ObjectName object;             // no bus name: an application that cannot be read
  std::int32_t pid = 0;
  std::uint64_t limit = messageLimit;  // microseconds for one message
  bool application = false;            // the root object of an application
  bool topLevel = false;               // one of its windows
};

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
