// The greeting goes over a socket of our own, because the library's own connecting has no limit.
#include "platform/linux/x11_display.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Where a local server listens, followed by the display's number. A constant of the window system:
// no setting moves it.
constexpr std::string_view socketPath = "/tmp/.X11-unix/X";

// Absent for no display's name and for a display of another machine.
std::optional<int> localDisplay(const char* name) {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  if (xcb_parse_display(name, &host, &display, &screen) == 0) return std::nullopt;
  const bool local = host == nullptr || *host == '\0' || std::string_view(host) == "unix";
  std::free(host);
  return local ? std::optional(display) : std::nullopt;
}

// Any answer will do, a refusal included: the real connection follows.
bool answersGreeting(int file, double deadline) {
  // Byte order, protocol 11.0, no authorisation.
  constexpr std::array<unsigned char, 12> greeting{'l', 0, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  if (send(file, greeting.data(), greeting.size(), MSG_NOSIGNAL) !=
          static_cast<ssize_t>(greeting.size()) ||
      !readableBy(deadline, file)) {
    return false;
  }
  char byte = 0;
  return recv(file, &byte, 1, MSG_DONTWAIT) == 1;
}

// A name that begins with NUL is one of the kernel's own and no file.
bool socketAnswers(const std::string& path, double deadline) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return false;
  std::copy(path.begin(), path.end(), address.sun_path);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (file < 0) return false;
  const bool answers = connect(file, reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
                       answersGreeting(file, deadline);
  close(file);
  return answers;
}

}  // namespace

bool displayAnswers(const char* name) {
  const auto display = localDisplay(name);
  if (!display) return false;
  const std::string path = std::string(socketPath) + std::to_string(*display);
  const double deadline = systemUptime() + x11ExchangeLimit;
  // A sandbox may leave only one of the two names in sight.
  return socketAnswers(path, deadline) || socketAnswers(std::string(1, '\0') + path, deadline);
}

bool readableBy(double deadline, int file) {
  const double left = deadline - systemUptime();
  if (left <= 0) return false;
  pollfd entry{file, POLLIN, 0};
  return poll(&entry, 1, static_cast<int>(left * 1000) + 1) > 0;
}

}  // namespace callmonitor::platform
