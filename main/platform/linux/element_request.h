// One read of one attribute, and what it needs to know of its element.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/linux/desktop.h"
#include "platform/linux/element_handle.h"
#include "platform/linux/element_memory.h"
#include "platform/linux/role_map.h"

namespace callmonitor::platform {

// One read of one attribute of one element.
struct Request {
  Desktop& desktop;
  const ElementReference& reference;
  ElementMemory& memory;
  // One for all messages of the read, so that an application that is slow to answer each of them
  // cannot hold a cycle up for longer than one that answers none.
  double deadline = deadlineFrom(reference);

  [[nodiscard]] BusTarget target() const { return {reference.object, reference.limit, deadline}; }
};

// Each of these answers from memory or asks, and gives the code.

// An object without a role is one that is gone.
[[nodiscard]] std::int32_t needRole(const Request& request);
// Success means also that the element still exists. A window that was destroyed keeps its role but
// loses every state; a part of a window may have none while it is hidden and disabled.
[[nodiscard]] std::int32_t needStates(const Request& request);
// Object attributes are there with the properties, however the toolkit tells them.
[[nodiscard]] std::int32_t needProperties(const Request& request);

using Need = std::int32_t (*)(const Request&);

// Success when all are answered; else the code of the first that is not.
template <std::size_t count>
[[nodiscard]] std::int32_t needAll(const Request& request, const std::array<Need, count>& needs) {
  for (const Need need : needs) {
    const std::int32_t outcome = need(request);
    if (outcome != code::success) return outcome;
  }
  return code::success;
}

// What was answered so far, for the map of roles.
[[nodiscard]] AccessibleFacts factsOf(const Request& request);

}  // namespace callmonitor::platform
