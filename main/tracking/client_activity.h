// What is remembered of the meeting client in front from tick to tick.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "platform/platform.h"

namespace callmonitor {

// The surface on which a lobby shows, and the key under which it is reported: the key stays while
// the lobby does, though no meeting identity is known yet.
struct LobbyRoot {
  platform::Element root;
  std::string key;
};

struct ClientActivityMemory {
  std::map<std::int32_t, LobbyRoot> lobbyRoots;  // by process id
};

}  // namespace callmonitor
