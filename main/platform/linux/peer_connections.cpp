// An application tells its own address, but only to who asks it over the bus.
#include "platform/linux/peer_connections.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "platform/linux/accessible_object.h"
#include "platform/linux/bus_address.h"

namespace callmonitor::platform {
namespace {

// More applications than this are hardly ever scanned within a few cycles of each other.
constexpr std::ptrdiff_t mostConnections = 8;
// After so many refusals one after the other it is hardly chance, and each costs a message.
constexpr int fewRefusals = 3;
// Seconds until such an application is asked once more: what kept it may be over by then.
constexpr double quietTime = 60;

bool open(const Peer& peer) {
  return peer.connection && sd_bus_is_open(peer.connection.get()) > 0;
}

void connect(PeerConnections& peers, AccessibilityBus& bus, const BusTarget& root, Peer& peer) {
  const auto address = readOwnAddress(bus, root);
  // An application that did not answer has refused nothing.
  if (address.code == code::cannotComplete) return;
  if (address.code != code::success || !namesLocalSockets(address.value)) {
    refuse(peer, systemUptime());
    return;
  }
  const double limit = systemUptime() + static_cast<double>(root.limit) / 1e6;
  bool late = false;
  makeRoom(peers);
  peer.connection =
      openBus(address.value, FarEnd::peer, std::min(root.deadline.value_or(limit), limit), &late);
  if (peer.connection && !ofSameUser(peer.connection.get())) peer.connection.reset();
  if (peer.connection) {
    peer.refusals = 0;
    return;
  }
  refuse(peer, systemUptime());
  if (late && bus.rememberSilent) bus.silent.insert(root.object.bus);
}

}  // namespace

sd_bus* peerConnection(PeerConnections& peers, AccessibilityBus& bus, const BusTarget& root) {
  if (peers.generation != bus.generation) peers = {bus.generation, {}, 0};
  if (bus.silent.contains(root.object.bus)) return nullptr;
  Peer& peer = peers.peers[root.object.bus];
  if (peer.connection && !open(peer)) {
    peer.connection.reset();
    peer.lost = true;
  }
  if (!peer.connection && mayTry(peer, systemUptime())) connect(peers, bus, root, peer);
  peer.used = ++peers.uses;
  return peer.connection.get();
}

void refuse(Peer& peer, double now) {
  peer.connection.reset();
  peer.lost = true;
  if (++peer.refusals >= fewRefusals) peer.nextTry = now + quietTime;
}

bool mayTry(const Peer& peer, double now) {
  return !peer.lost && (peer.refusals < fewRefusals || now >= peer.nextTry);
}

void refreshPeers(PeerConnections& peers) {
  for (auto& [name, peer] : peers.peers) {
    peer.lost = false;
    if (peer.connection && !discardArrived(peer.connection.get())) peer.connection.reset();
  }
}

void forgetUnregistered(PeerConnections& peers, const std::set<std::string>& registered) {
  std::erase_if(peers.peers, [&](const auto& each) { return !registered.contains(each.first); });
}

void makeRoom(PeerConnections& peers) {
  const auto connected = [](const auto& each) { return each.second.connection != nullptr; };
  while (std::count_if(peers.peers.begin(), peers.peers.end(), connected) >= mostConnections) {
    auto oldest = peers.peers.end();
    for (auto each = peers.peers.begin(); each != peers.peers.end(); ++each) {
      if (!connected(*each)) continue;
      if (oldest == peers.peers.end() || each->second.used < oldest->second.used) oldest = each;
    }
    oldest->second.connection.reset();
  }
}

}  // namespace callmonitor::platform
