// Accessibility messages: one attribute read or set, and the values that come back.
#include <ApplicationServices/ApplicationServices.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/macos/core_values.h"
#include "platform/macos/element_reference.h"
#include "platform/macos/owned.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

using Value = ValueOf<Element>;

// Absent for anything but an element. The object may belong to a list that goes soon.
std::optional<Element> elementOf(CFTypeRef object, double messageTimeout) {
  const auto element = typed<AXUIElementRef>(object, AXUIElementGetTypeID());
  if (element == nullptr) return std::nullopt;
  return wrapped(Owned<AXUIElementRef>::shared(element), messageTimeout);
}

// A list with anything but elements in it is not taken in parts: what is missing from it would pass
// for not being there.
Value listOf(CFArrayRef array, double messageTimeout) {
  std::vector<Element> elements;
  const CFIndex count = CFArrayGetCount(array);
  elements.reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i) {
    std::optional<Element> element = elementOf(CFArrayGetValueAtIndex(array, i), messageTimeout);
    if (!element) return OtherType{};
    elements.push_back(*std::move(element));
  }
  return elements;
}

Value valueOf(CFTypeRef object, double messageTimeout) {
  if (object == nullptr) return std::monostate{};
  if (auto text = textOf(object)) return *std::move(text);
  if (const auto flag = flagOf(object)) return *flag;
  if (auto element = elementOf(object, messageTimeout)) return *std::move(element);
  if (const auto array = typed<CFArrayRef>(object, CFArrayGetTypeID())) {
    return listOf(array, messageTimeout);
  }
  if (auto address = addressOf(object)) return Address{*std::move(address)};
  return OtherType{};
}

}  // namespace

bool accessibilityTrusted() {
  return AXIsProcessTrusted() != 0;
}

Reading readAttribute(const Element& element, std::string_view name) {
  const Owned<CFStringRef> attribute = stringOf(name);
  if (!element.reference || !attribute) return {code::illegalArgument, {}};
  const ElementReference& reference = *element.reference;
  Owned<CFTypeRef> value;
  const auto result = static_cast<std::int32_t>(
      AXUIElementCopyAttributeValue(reference.element.get(), attribute.get(), value.slot()));
  if (result != code::success) return {result, {}};
  return {result, valueOf(value.get(), reference.messageTimeout)};
}

std::int32_t setAttribute(const Element& element, std::string_view name, bool value) {
  const Owned<CFStringRef> attribute = stringOf(name);
  if (!element.reference || !attribute) return code::illegalArgument;
  return static_cast<std::int32_t>(AXUIElementSetAttributeValue(
      element.reference->element.get(), attribute.get(), value ? kCFBooleanTrue : kCFBooleanFalse));
}

// Attributes are read one by one on purpose: a deadline may fall between any two of them, and what
// is not reached is not asked for. So nothing is done ahead of its turn.
void expectScan(const Element& /*root*/, double /*deadline*/, int /*budget*/) {}
void expectSearch(const Element& /*root*/, double /*deadline*/, int /*budget*/) {}

}  // namespace callmonitor::platform
