#include "evidence/element_registry.h"

namespace callmonitor {

const std::string& elementID(ElementRegistry& registry, const platform::Element& element) {
  std::string& identifier = registry.identifiers[element];
  if (identifier.empty()) identifier = platform::randomUUID();
  return identifier;
}

void forgetAllBut(ElementRegistry& registry, const std::set<std::string>& kept) {
  std::erase_if(registry.identifiers,
                [&](const auto& entry) { return !kept.contains(entry.second); });
}

}  // namespace callmonitor
