#include "platform/linux/peer_connections.h"

#include <gtest/gtest.h>

namespace callmonitor::platform {
namespace {

// A cycle in which the connection is refused at `now`.
void refusedCycle(PeerConnections& peers, double now) {
  refreshPeers(peers);
  refuse(peers.peers["app"], now);
}

TEST(MayTry, TriesOnceACycleUntilTheThirdRefusal) {
  PeerConnections peers;
  const Peer& peer = peers.peers["app"];
  EXPECT_TRUE(mayTry(peer, 100)) << "nothing was refused yet";
  refusedCycle(peers, 100);
  EXPECT_FALSE(mayTry(peer, 100)) << "in the cycle of a refusal";
  refreshPeers(peers);
  EXPECT_TRUE(mayTry(peer, 101)) << "after one refusal";
  refusedCycle(peers, 101);
  refreshPeers(peers);
  EXPECT_TRUE(mayTry(peer, 102)) << "after two refusals";
  refusedCycle(peers, 102);
  refreshPeers(peers);
  EXPECT_FALSE(mayTry(peer, 103)) << "after three refusals";
}

TEST(MayTry, TriesAgainAMinuteAfterTheThirdRefusalAndEachFurtherOne) {
  PeerConnections peers;
  const Peer& peer = peers.peers["app"];
  for (const double now : {100, 101, 102}) refusedCycle(peers, now);
  refreshPeers(peers);
  EXPECT_FALSE(mayTry(peer, 161.9));
  EXPECT_TRUE(mayTry(peer, 162));
  refusedCycle(peers, 170);
  EXPECT_FALSE(mayTry(peer, 300)) << "in the cycle of a refusal";
  refreshPeers(peers);
  EXPECT_FALSE(mayTry(peer, 229.9));
  EXPECT_TRUE(mayTry(peer, 230));
}

}  // namespace
}  // namespace callmonitor::platform
