#include "platform/linux/pulse_socket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/linux/runtime_directory.h"

namespace callmonitor::platform {

PulseServer pulseServer() {
  if (const char* named = std::getenv("PULSE_SERVER"); named != nullptr && *named != '\0') {
    return {named, SocketLook::accepts};
  }
  const std::string path = pulseSocketPath(std::getenv("PULSE_RUNTIME_PATH"), runtimeDirectory());
  return {"unix:" + path, lookAtSocket(path)};
}

std::string pulseSocketPath(const char* pulseRuntimePath, const std::string& runtimeDirectory) {
  if (pulseRuntimePath != nullptr && *pulseRuntimePath != '\0') {
    return std::string(pulseRuntimePath) + "/native";
  }
  return runtimeDirectory + "/pulse/native";
}

SocketLook lookAtSocket(const std::string& path) {
  sockaddr_un address{};
  // No server could have made it.
  if (path.size() >= sizeof(address.sun_path)) return SocketLook::away;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (client < 0) return SocketLook::refuses;
  const bool accepted =
      connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  const int error = accepted ? 0 : errno;
  close(client);
  if (accepted) return SocketLook::accepts;
  return error == ENOENT || error == ENOTDIR ? SocketLook::away : SocketLook::refuses;
}

}  // namespace callmonitor::platform
