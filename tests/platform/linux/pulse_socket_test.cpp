#include "platform/linux/pulse_socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

TEST(PulseSocketPath, FollowsTheLibrarysOwnOrder) {
  struct Case {
    std::string name;
    const char* pulseRuntimePath;
    std::string runtimeDirectory;
    std::string expected;
  };
  const std::vector<Case> cases{
      {"the run-time directory", nullptr, "/run/user/1000", "/run/user/1000/pulse/native"},
      {"a directory of its own goes first", "/srv/p", "/run/user/1000", "/srv/p/native"},
      {"an empty variable counts as none", "", "/run/user/1000", "/run/user/1000/pulse/native"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(pulseSocketPath(each.pulseRuntimePath, each.runtimeDirectory), each.expected)
        << each.name;
  }
}

TEST(LookAtSocket, TellsNoServerFromOneThatCannotBeReached) {
  const std::string path = testing::TempDir() + "socket-" + std::to_string(getpid());
  using enum SocketLook;
  EXPECT_EQ(lookAtSocket(path), away) << "there is no such file";
  EXPECT_EQ(lookAtSocket(path + "/native"), away) << "there is no such directory";
  EXPECT_EQ(lookAtSocket(std::string(200, 'x')), away) << "no address is that long";

  const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_GE(server, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof(address.sun_path));
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  EXPECT_EQ(lookAtSocket(path), refuses) << "nobody listens yet";
  ASSERT_EQ(listen(server, 1), 0);
  EXPECT_EQ(lookAtSocket(path), accepts);
  close(server);
  EXPECT_EQ(lookAtSocket(path), refuses) << "the server has ended and left its file behind";
  EXPECT_EQ(lookAtSocket(path + "/native"), away) << "what should be a directory is none";
  unlink(path.c_str());
  EXPECT_EQ(lookAtSocket(path), away) << "the server has taken its file away";
}

}  // namespace
}  // namespace callmonitor::platform
