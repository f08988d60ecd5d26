// Connections straight to applications: a message on one is not passed on by the bus, which costs
// as much as many an answer.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "platform/linux/accessibility_bus.h"
#include "platform/linux/bus_message.h"

namespace callmonitor::platform {

// What is known of one application's own connection.
struct Peer {
  BusConnection connection;  // null: there is none
  int refusals = 0;          // how often it could not be had, one after the other
  double nextTry = 0;        // uptime seconds; not before then is it tried again
  bool lost = false;         // it ended, or could not be had, in this cycle
  std::uint64_t used = 0;    // when it was used last, by the count of `PeerConnections`
};

struct PeerConnections {
  std::uint64_t generation = 0;  // of the accessibility bus whose names are the keys
  std::map<std::string, Peer> peers;
  std::uint64_t uses = 0;
};

// The open connection to the application behind `root`, made if need be by the root's deadline.
// Null where it cannot be had; the bus then leads there. An application that is late with it counts
// as silent.
[[nodiscard]] sd_bus* peerConnection(PeerConnections& peers, AccessibilityBus& bus,
                                     const BusTarget& root);

// Notes that the connection could not be had at `now` (uptime seconds). It is tried again in the
// next cycle, but after several refusals one after the other only once a minute.
void refuse(Peer& peer, double now);

// Whether a connection that is not there may be tried at `now` (uptime seconds).
[[nodiscard]] bool mayTry(const Peer& peer, double now);

// A new cycle begins: drops what arrived unasked or too late, and the connections that have ended.
void refreshPeers(PeerConnections& peers);

// Forgets applications that are not registered any more; `registered` holds the bus names of those
// that are.
void forgetUnregistered(PeerConnections& peers, const std::set<std::string>& registered);

// Closes the connection that was not used for the longest time, until one more may be opened.
void makeRoom(PeerConnections& peers);

}  // namespace callmonitor::platform
