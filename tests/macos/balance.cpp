#include "macos/balance.h"

#include <gtest/gtest.h>

#include <set>

#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"

namespace callmonitor::macos {

void expectBalance(const ProcessState& state, std::size_t openPools) {
  std::set<const void*> references;
  for (const auto& [element, identifier] : state.scan.registry.identifiers) {
    references.insert(element.reference.get());
  }
  for (const auto& [identifier, element] : state.scan.elements) {
    references.insert(element.reference.get());
  }
  for (const auto& [pid, lobby] : state.clients.lobbyRoots) {
    references.insert(lobby.root.reference.get());
  }
  EXPECT_EQ(standins::heldReferences(), static_cast<long>(references.size()))
      << "references that are held, and handles, at uptime " << standins::desktop().uptime;
  EXPECT_EQ(standins::openPools(), openPools);
}

}  // namespace callmonitor::macos
