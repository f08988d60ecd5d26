#include "platform/macos/element_reference.h"

#include <memory>
#include <utility>

namespace callmonitor::platform {

bool operator==(const Element& left, const Element& right) {
  if (left.reference == right.reference) return true;
  if (!left.reference || !right.reference) return false;
  return CFEqual(left.reference->element.get(), right.reference->element.get()) != 0;
}

std::size_t hashOf(const Element& element) {
  return element.reference ? CFHash(element.reference->element.get()) : 0;
}

Element wrapped(Owned<AXUIElementRef> element, double messageTimeout) {
  if (!element) return {};
  // Local to this process. An element that refuses answers by the system's own time-out.
  AXUIElementSetMessagingTimeout(element.get(), static_cast<float>(messageTimeout));
  return {std::make_shared<const ElementReference>(
      ElementReference{std::move(element), messageTimeout})};
}

Element applicationElement(std::int32_t pid, double messageTimeout) {
  return wrapped(Owned<AXUIElementRef>::taken(AXUIElementCreateApplication(pid)), messageTimeout);
}

}  // namespace callmonitor::platform
