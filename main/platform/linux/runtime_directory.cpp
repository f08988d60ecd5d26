#include "platform/linux/runtime_directory.h"

#include <unistd.h>

#include <cstdlib>

namespace callmonitor::platform {

std::string runtimeDirectory(const char* named) {
  if (named != nullptr && *named != '\0') return named;
  return "/run/user/" + std::to_string(getuid());
}

std::string runtimeDirectory() {
  return runtimeDirectory(std::getenv("XDG_RUNTIME_DIR"));
}

}  // namespace callmonitor::platform
