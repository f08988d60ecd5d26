#include "platform/linux/x11_display.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <thread>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// A number that no real server of this machine has.
std::string displayNumber() {
  return std::to_string(1'000'000 + getpid());
}

// A listening socket under a display's name in the kernel's own name space.
int listenAsDisplay(const std::string& number) {
  const std::string name = std::string(1, '\0') + "/tmp/.X11-unix/X" + number;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::copy(name.begin(), name.end(), address.sun_path);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
  const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(file, reinterpret_cast<const sockaddr*>(&address), length) != 0) return -1;
  return listen(file, 1) == 0 ? file : -1;
}

double secondsOfAsking(const std::string& name, bool& answers) {
  const double start = systemUptime();
  answers = displayAnswers(name.c_str());
  return systemUptime() - start;
}

TEST(DisplayAnswers, FindsAServerThatIsNoFile) {
  const std::string number = displayNumber();
  const int listening = listenAsDisplay(number);
  ASSERT_GE(listening, 0);
  std::thread server([listening] {
    const int client = accept(listening, nullptr, nullptr);
    char greeting[12] = {};
    if (recv(client, greeting, sizeof greeting, MSG_WAITALL) == sizeof greeting) {
      send(client, "", 1, MSG_NOSIGNAL);
    }
    close(client);
  });
  EXPECT_TRUE(displayAnswers((":" + number).c_str()));
  server.join();
  close(listening);
}

TEST(DisplayAnswers, GivesAServerThatSaysNothingUpWithinTheLimit) {
  const std::string number = displayNumber();
  const int listening = listenAsDisplay(number);
  ASSERT_GE(listening, 0);
  bool answers = true;
  const double seconds = secondsOfAsking(":" + number, answers);
  EXPECT_FALSE(answers);
  EXPECT_GE(seconds, x11ExchangeLimit);
  EXPECT_LT(seconds, 5 * x11ExchangeLimit);
  close(listening);
}

TEST(DisplayAnswers, IsFalseWhereNobodyListens) {
  EXPECT_FALSE(displayAnswers((":" + displayNumber()).c_str()));
  EXPECT_FALSE(displayAnswers("no display"));
}

// A server of this machine stands behind both names: it is never asked.
TEST(DisplayAnswers, LeavesDisplaysThatAreReachedOverANetworkAlone) {
  const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ASSERT_EQ(bind(listening, reinterpret_cast<const sockaddr*>(&address), length), 0);
  ASSERT_EQ(listen(listening, 1), 0);
  ASSERT_EQ(getsockname(listening, reinterpret_cast<sockaddr*>(&address), &length), 0);
  const std::string number = std::to_string(ntohs(address.sin_port) - 6000);
  for (const std::string host : {"localhost:", "127.0.0.1:", "tcp/localhost:"}) {
    bool answers = true;
    EXPECT_LT(secondsOfAsking(host + number + ".0", answers), x11ExchangeLimit) << host;
    EXPECT_FALSE(answers) << host;
  }
  close(listening);
}

}  // namespace
}  // namespace callmonitor::platform
