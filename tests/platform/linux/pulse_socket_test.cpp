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
    const char* runtimeDirectory;
    std::string expected;
  };
  const std::vector<Case> cases{
      {"the run-time directory", nullptr, "/run/user/1000", "/run/user/1000/pulse/native"},
      {"a directory of its own goes first", "/srv/p", "/run/user/1000", "/srv/p/native"},
      {"an empty variable counts as none", "", "/run/user/1000", "/run/user/1000/pulse/native"},
      {"two empty variables", "", "", ""},
      {"no variable", nullptr, nullptr, ""},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(pulseSocketPath(each.pulseRuntimePath, each.runtimeDirectory), each.expected)
        << each.name;
  }
}

TEST(SocketAccepts, IsTrueOnlyWhereSomebodyListens) {
  const std::string path = testing::TempDir() + "socket-" + std::to_string(getpid());
  EXPECT_FALSE(socketAccepts(path)) << "there is no such file";
  EXPECT_FALSE(socketAccepts(std::string(200, 'x'))) << "no address is that long";

  const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_GE(server, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof(address.sun_path));
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  EXPECT_FALSE(socketAccepts(path)) << "nobody listens yet";
  ASSERT_EQ(listen(server, 1), 0);
  EXPECT_TRUE(socketAccepts(path));
  close(server);
  EXPECT_FALSE(socketAccepts(path)) << "the server has ended and left its file behind";
  unlink(path.c_str());
}

}  // namespace
}  // namespace callmonitor::platform
