// Handles are made, compared and hashed here; what they stand for is asked elsewhere.
#include "platform/linux/element_handle.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/application_list.h"
#include "platform/linux/desktop.h"

namespace callmonitor::platform {

Element elementBeside(const ElementReference& parent, ObjectName object, bool topLevel) {
  ElementReference reference = parent;
  reference.object = std::move(object);
  reference.application = false;
  reference.topLevel = topLevel;
  return {std::make_shared<const ElementReference>(std::move(reference))};
}

double deadlineFrom(const ElementReference& reference) {
  return systemUptime() + static_cast<double>(reference.limit) / 1e6;
}

bool operator==(const Element& left, const Element& right) {
  if (left.reference == right.reference) return true;
  if (!left.reference || !right.reference) return false;
  const ElementReference& one = *left.reference;
  const ElementReference& other = *right.reference;
  if (one.object.bus.empty() && other.object.bus.empty()) return one.pid == other.pid;
  return one.generation == other.generation && one.object == other.object;
}

std::size_t hashOf(const Element& element) {
  if (!element.reference) return 0;
  const ElementReference& reference = *element.reference;
  if (reference.object.bus.empty()) return std::hash<std::int32_t>{}(reference.pid);
  // An application's objects differ in their paths only.
  return std::hash<std::string>{}(reference.object.path) ^
         (std::hash<std::string>{}(reference.object.bus) << 1);
}

Element applicationElement(std::int32_t pid, double messageTimeout) {
  Desktop& here = desktop();
  ElementReference reference;
  reference.object = registeredRoot(here, pid).value_or(ObjectName{});
  reference.generation = here.bus.generation;
  reference.pid = pid;
  reference.application = true;
  // No limit would mean the library's own, which is far too long.
  if (messageTimeout > 0) reference.limit = static_cast<std::uint64_t>(messageTimeout * 1e6);
  return {std::make_shared<const ElementReference>(std::move(reference))};
}

}  // namespace callmonitor::platform
