// Where PulseAudio's server would be, and whether anybody listens there.
#pragma once

#include <optional>
#include <string>

namespace callmonitor::platform {

// The server to connect to, in the library's form; absent where nobody listens. A socket that a
// dead server left behind refuses at once, which is cheaper to learn here than through the library.
[[nodiscard]] std::optional<std::string> pulseServer();

// The path of the server's socket from the values of PULSE_RUNTIME_PATH and XDG_RUNTIME_DIR, each
// null where it is not set; empty when neither says.
[[nodiscard]] std::string pulseSocketPath(const char* pulseRuntimePath,
                                          const char* runtimeDirectory);

// Whether a connection to this Unix socket is accepted. Does not wait.
[[nodiscard]] bool socketAccepts(const std::string& path);

}  // namespace callmonitor::platform
