// Stable identifiers for accessibility elements: random, so that they reveal nothing about the
// element, and the same for every reference to it for as long as it is observed.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <unordered_map>

#include "platform/platform.h"

namespace callmonitor {

struct ElementRegistry {
  std::unordered_map<platform::Element, std::string> identifiers;
};

// The identifier of an element: the one it was given before, or else a new random UUID text.
[[nodiscard]] const std::string& elementID(ElementRegistry& registry,
                                           const platform::Element& element);

// Forgets every element whose identifier is not in `kept`. Without this a process that runs for
// weeks would remember every page that was ever opened.
void forgetAllBut(ElementRegistry& registry, const std::set<std::string>& kept);

}  // namespace callmonitor
