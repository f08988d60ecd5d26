// The attributes of an element and how each is read.
#pragma once

#include <span>
#include <string_view>

#include "platform/linux/accessible_object.h"
#include "platform/linux/element_request.h"
#include "platform/platform.h"

namespace callmonitor::platform {

struct Attribute {
  std::string_view name;
  Reading (*read)(const Request&);
  // The questions that each read of it puts to the element, whatever kind of element that is. Those
  // that it puts to some elements only are not among them.
  std::span<const Question> always;
};

// Null for a name that is no attribute of this desktop's elements.
[[nodiscard]] const Attribute* attributeNamed(std::string_view name);

}  // namespace callmonitor::platform
