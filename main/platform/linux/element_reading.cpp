// Reads of attributes as the seam has them: whether there is anybody to ask, and what one read may
// remember for the next.
#include <cstdint>
#include <string_view>

#include "platform/linux/accessible_object.h"
#include "platform/linux/desktop.h"
#include "platform/linux/element_attributes.h"
#include "platform/linux/element_handle.h"
#include "platform/linux/element_memory.h"
#include "platform/linux/scan_ahead.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

constexpr std::string_view enhancedInterface = "AXEnhancedUserInterface";

// Anything but success says why the element cannot be asked at all.
std::int32_t askable(const Desktop& here, const Element& element) {
  if (!element.reference) return code::illegalArgument;
  const bool reachable = !element.reference->object.bus.empty() && here.bus.connection &&
                         element.reference->generation == here.bus.generation;
  return reachable ? code::success : code::cannotComplete;
}

// Whether the element that is being read has had this attribute read already.
bool askedAgain(const Desktop& here, const ElementReference& reference, std::string_view name) {
  const ElementMemory& memory = here.element;
  return memory.generation == reference.generation && memory.object == reference.object &&
         memory.asked.contains(name);
}

// The memory that this read may use: the desktop's for the element that is being read, else a
// fresh one that ends with the read.
ElementMemory& memoryFor(Desktop& here, const ElementReference& reference, std::string_view name,
                         ElementMemory& fresh) {
  if (!here.element.active) return fresh;
  ElementMemory& memory = here.element;
  const bool same = memory.generation == reference.generation &&
                    memory.object == reference.object && !askedAgain(here, reference, name);
  if (!same) {
    memory = {};
    memory.active = true;
    memory.generation = reference.generation;
    memory.object = reference.object;
  }
  memory.asked.emplace(name);
  return memory;
}

}  // namespace

Reading readAttribute(const Element& element, std::string_view name) {
  Desktop& here = desktop();
  const std::int32_t outcome = askable(here, element);
  if (outcome != code::success) return {outcome, {}};
  const Attribute* attribute = attributeNamed(name);
  if (attribute == nullptr) return {code::attributeUnsupported, {}};
  const ElementReference& reference = *element.reference;
  followScan(here, reference, attribute->always, askedAgain(here, reference, name));
  // The walk that this read is part of may have lost its bus while it was being followed.
  if (!here.bus.connection) return {code::cannotComplete, {}};
  ElementMemory fresh;
  return attribute->read({here, reference, memoryFor(here, reference, name, fresh)});
}

std::int32_t setAttribute(const Element& element, std::string_view name, bool value) {
  Desktop& here = desktop();
  const std::int32_t outcome = askable(here, element);
  if (outcome != code::success) return outcome;
  if (name != enhancedInterface || !value || !element.reference->application) {
    return code::attributeUnsupported;
  }
  // Browsers open the tree of their pages for whoever asks for the attributes of their root.
  const auto opened =
      readAttributes(here.bus, {element.reference->object, element.reference->limit});
  return opened.code;
}

}  // namespace callmonitor::platform
