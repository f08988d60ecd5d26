// Where PulseAudio's server would be, and whether anybody listens there.
#pragma once

#include <string>

namespace callmonitor::platform {

// What became of a try to reach a server.
enum class SocketLook {
  away,     // there is no such socket
  refuses,  // there is one, and nobody could be reached by it
  accepts   // somebody listens, or has to be asked to find out
};

struct PulseServer {
  std::string address;  // in the library's form
  SocketLook socket = SocketLook::away;
};

// The server to connect to. A socket that a dead server left behind refuses at once, which is
// cheaper to learn here than through the library. A server that PULSE_SERVER names is the library's
// to find, and never away.
[[nodiscard]] PulseServer pulseServer();

// The path of the server's socket from the values of PULSE_RUNTIME_PATH, null where it is not set,
// and the session's directory.
[[nodiscard]] std::string pulseSocketPath(const char* pulseRuntimePath,
                                          const std::string& runtimeDirectory);

// Tries to connect to a Unix socket. Does not wait.
[[nodiscard]] SocketLook lookAtSocket(const std::string& path);

}  // namespace callmonitor::platform
