// What an element handle is on this desktop.
#pragma once

#include <cstdint>

#include "platform/linux/bus_message.h"
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

// An element of the application that `parent` belongs to, read as that is.
[[nodiscard]] Element elementBeside(const ElementReference& parent, ObjectName object,
                                    bool topLevel = false);

// The moment (uptime seconds) by which a question that is put now must be answered.
[[nodiscard]] double deadlineFrom(const ElementReference& reference);

}  // namespace callmonitor::platform
