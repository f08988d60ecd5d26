// What the scanning of applications remembers from cycle to cycle.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "evidence/element_registry.h"
#include "platform/platform.h"

namespace callmonitor {

struct ScanMemory {
  ElementRegistry registry;
  // The elements of the last cycle and of tracked calls, by identifier.
  std::map<std::string, platform::Element> elements;
  // Identifiers of the elements that this cycle has touched.
  std::set<std::string> seen;
  // Per process id the launch time (seconds since 1970) of the process whose enhanced accessibility
  // interface was switched on; another launch under the same id has to be asked again.
  std::map<std::int32_t, double> accessibilityEnabled;
  // How far the order of applications and windows is turned, so that all of them take turns.
  long scanOffset = 0;
};

// The identifier of an element that this cycle touches, which is remembered under it.
std::string remember(ScanMemory& memory, const platform::Element& element);

// Ends a cycle: forgets every element that it did not touch but those in `alsoKept`, the elements
// and windows of tracked calls, so that a view that was found closed can be found closed again.
void forgetUnseen(ScanMemory& memory, const std::set<std::string>& alsoKept);

}  // namespace callmonitor
