#include "driver/scan_memory.h"

namespace callmonitor {

std::string remember(ScanMemory& memory, const platform::Element& element) {
  std::string identifier = elementID(memory.registry, element);
  memory.elements.insert_or_assign(identifier, element);
  memory.seen.insert(identifier);
  return identifier;
}

void forgetUnseen(ScanMemory& memory, const std::set<std::string>& alsoKept) {
  memory.seen.insert(alsoKept.begin(), alsoKept.end());
  std::erase_if(memory.elements,
                [&](const auto& entry) { return !memory.seen.contains(entry.first); });
  forgetAllBut(memory.registry, memory.seen);
  memory.seen.clear();
}

}  // namespace callmonitor
