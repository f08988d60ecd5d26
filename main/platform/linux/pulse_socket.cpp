#include "platform/linux/pulse_socket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace callmonitor::platform {

std::optional<std::string> pulseServer() {
  if (const char* named = std::getenv("PULSE_SERVER"); named != nullptr && *named != '\0') {
    return std::string(named);
  }
  const std::string path =
      pulseSocketPath(std::getenv("PULSE_RUNTIME_PATH"), std::getenv("XDG_RUNTIME_DIR"));
  if (path.empty() || !socketAccepts(path)) return std::nullopt;
  return "unix:" + path;
}

std::string pulseSocketPath(const char* pulseRuntimePath, const char* runtimeDirectory) {
  if (pulseRuntimePath != nullptr && *pulseRuntimePath != '\0') {
    return std::string(pulseRuntimePath) + "/native";
  }
  if (runtimeDirectory != nullptr && *runtimeDirectory != '\0') {
    return std::string(runtimeDirectory) + "/pulse/native";
  }
  return {};
}

bool socketAccepts(const std::string& path) {
  sockaddr_un address{};
  if (path.size() >= sizeof(address.sun_path)) return false;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (client < 0) return false;
  const bool accepted =
      connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(client);
  return accepted;
}

}  // namespace callmonitor::platform
