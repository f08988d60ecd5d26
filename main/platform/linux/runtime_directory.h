// Where this session's servers keep their sockets.
#pragma once

#include <string>

namespace callmonitor::platform {

// The directory for a value of XDG_RUNTIME_DIR, null where it is not set: where nobody named one,
// as for a service that was started outside the session, it is where the session's own is kept.
[[nodiscard]] std::string runtimeDirectory(const char* named);

// The directory of this process's user.
[[nodiscard]] std::string runtimeDirectory();

}  // namespace callmonitor::platform
