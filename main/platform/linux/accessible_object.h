// The messages of the accessibility interface that are used, each as one function: the code of the
// reply, and the value beside it, which means something only beside `code::success`.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility_bus.h"
#include "platform/linux/window_match.h"

namespace callmonitor::platform {

template <class Value>
struct Answer {
  std::int32_t code = code::failure;
  Value value{};
};

// Object attributes that are looked at; empty when the object does not have one.
struct ObjectAttributes {
  std::string webRoles;         // "xml-roles"
  std::string tag;              // "tag"
  std::string inputType;        // "text-input-type"
  std::string roleDescription;  // "roledescription"
  std::string identifier;       // "id"
};

struct ObjectProperties {
  std::string name;
  std::optional<std::int32_t> childCount;
  std::optional<ObjectAttributes> attributes;  // absent when the toolkit tells them only on demand
};

// What can be asked about an object ahead of the read that wants it.
enum class Question { states, role, properties, attributes, extents };

// Puts the question under way in the bus's pipeline, which must lead to the object; the function
// below that asks it then takes that reply. False when it could not be sent.
bool putAhead(AccessibilityBus& bus, const ObjectName& object, Question question);

// `code::success` with role 0 is the live answer of an object that is gone.
[[nodiscard]] Answer<std::uint32_t> readRole(AccessibilityBus& bus, const BusTarget& target);
// Bits as in role_map.h's namespace `state`.
[[nodiscard]] Answer<std::uint64_t> readStates(AccessibilityBus& bus, const BusTarget& target);
[[nodiscard]] Answer<ObjectProperties> readProperties(AccessibilityBus& bus,
                                                      const BusTarget& target);
// Asking an application's root object this is also what opens a browser's whole tree.
[[nodiscard]] Answer<ObjectAttributes> readAttributes(AccessibilityBus& bus,
                                                      const BusTarget& target);
// In the object's own order; places that no object stands at are left out.
[[nodiscard]] Answer<std::vector<ObjectName>> readChildren(AccessibilityBus& bus,
                                                           const BusTarget& target);
// The address of a page as its browser writes it; may be empty.
[[nodiscard]] Answer<std::string> readDocumentAddress(AccessibilityBus& bus,
                                                      const BusTarget& target);
// The whole text of a text object.
[[nodiscard]] Answer<std::string> readText(AccessibilityBus& bus, const BusTarget& target);
[[nodiscard]] Answer<std::string> readRoleName(AccessibilityBus& bus, const BusTarget& target);
// In pixels of the screen.
[[nodiscard]] Answer<Extents> readExtents(AccessibilityBus& bus, const BusTarget& target);
// Where the application behind a root object takes connections of its own; may be empty.
[[nodiscard]] Answer<std::string> readOwnAddress(AccessibilityBus& bus, const BusTarget& root);
// The process behind a bus name, as the bus itself knows it.
[[nodiscard]] Answer<std::int32_t> readProcess(AccessibilityBus& bus, const std::string& busName);

}  // namespace callmonitor::platform
