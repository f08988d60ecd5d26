// The look at the one application in front: whether it is a meeting client, in a call with live
// media, or waiting in a lobby.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "evidence/taken_scans.h"
#include "platform/platform.h"
#include "tracking/writer.h"

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

// Looks at the application in front and writes how far it came, and what the client does where one
// was recognised; both through the gates. Without trust nothing is looked at. A reading that fails
// ends the look with the stage that it had reached.
// `taken` holds the scans that this tick has taken already; they are not taken again.
void reportClientActivity(ClientActivityMemory& memory, WriterGates& gates, const TakenScans& taken,
                          bool trusted);

}  // namespace callmonitor
