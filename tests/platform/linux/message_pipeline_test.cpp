#include "platform/linux/message_pipeline.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/linux/peer_connections.h"

namespace callmonitor::platform {
namespace {

TEST(UnansweredAllowed, LetsNoQueueUseUpTheLimitOfTheMessageBehindIt) {
  struct Case {
    std::string name;
    double slowest;
    std::size_t expected;
  };
  const std::vector<Case> cases{
      {"as many as are of use while nothing is known", 0, 128},
      {"as many to an application that takes 50 microseconds", 0.00005, 128},
      {"fifty to one that takes a millisecond", 0.001, 50},
      {"five to one that takes ten", 0.01, 5},
      {"one to one that takes a quarter of the limit", 0.05, 1},
      {"none ahead to one that takes longer", 0.06, 0},
  };
  for (const Case& each : cases) {
    // A hair less, for fractions of a second are not exact.
    EXPECT_EQ(unansweredAllowed(each.slowest * 0.999999, 200'000), each.expected) << each.name;
  }
}

// A socket in a directory of its own that takes connections and never says a word, as a stopped
// process does.
class MuteListener : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/mute-XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    directory = name;
    path = directory + "/socket";
    listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(listener, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(listen(listener, 4), 0);
  }
  void TearDown() override {
    if (listener >= 0) close(listener);
    unlink(path.c_str());
    rmdir(directory.c_str());
  }

  std::string directory;
  std::string path;
  int listener = -1;
};

TEST_F(MuteListener, IsNotWaitedForBeyondTheDeadline) {
  const double begun = systemUptime();
  bool late = false;
  EXPECT_EQ(openBus("unix:path=" + path, FarEnd::peer, begun + 0.2, &late), nullptr);
  EXPECT_TRUE(late);
  EXPECT_GE(systemUptime() - begun, 0.2);
  EXPECT_LT(systemUptime() - begun, 1.0) << "not the library's own limit";
}

TEST(OpenBus, TellsARefusalFromADelay) {
  bool late = true;
  EXPECT_EQ(openBus("unix:path=/nowhere/at/all", FarEnd::peer, systemUptime() + 5, &late), nullptr);
  EXPECT_FALSE(late);
}

BusConnection unconnected() {
  sd_bus* made = nullptr;
  EXPECT_GE(sd_bus_new(&made), 0);
  return BusConnection(made);
}

TEST(PeerConnections, CloseTheLeastRecentlyUsedToMakeRoom) {
  PeerConnections peers;
  for (std::uint64_t i = 1; i <= 8; ++i) {
    Peer& peer = peers.peers[":1." + std::to_string(i)];
    peer.connection = unconnected();
    peer.used = i == 3 ? 0 : i;
  }
  makeRoom(peers);
  for (const auto& [name, peer] : peers.peers) {
    EXPECT_EQ(peer.connection == nullptr, name == ":1.3") << name;
  }
  makeRoom(peers);
  EXPECT_NE(peers.peers[":1.1"].connection, nullptr) << "there is room already";
}

TEST(PeerConnections, GoWithTheApplicationsThatAreNotRegisteredAnyMore) {
  PeerConnections peers;
  peers.peers[":1.1"].connection = unconnected();
  peers.peers[":1.2"].connection = unconnected();
  forgetUnregistered(peers, {":1.2"});
  EXPECT_FALSE(peers.peers.contains(":1.1"));
  EXPECT_TRUE(peers.peers.contains(":1.2"));
}

TEST(PeerConnections, AreTriedAgainInTheNextCycle) {
  PeerConnections peers;
  peers.peers[":1.1"].lost = true;
  refreshPeers(peers);
  EXPECT_FALSE(peers.peers[":1.1"].lost);
}

}  // namespace
}  // namespace callmonitor::platform
