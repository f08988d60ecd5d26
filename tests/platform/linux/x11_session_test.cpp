// Whether the session's windows are all X11 windows.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/linux/x11.h"

namespace callmonitor::platform {
namespace {

void setVariable(const char* name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name, value->c_str(), 1);
  } else {
    unsetenv(name);
  }
}

struct Row {
  const char* name;
  std::optional<std::string> type;
  std::optional<std::string> wayland;
  bool x11;
};

TEST(X11Session, IsAnySessionWithoutAWaylandCompositor) {
  const Row rows[] = {
      {"it says so", "x11", std::nullopt, true},
      {"it says so beside a nested compositor", "x11", "wayland-1", true},
      {"it says that it is another", "wayland", std::nullopt, false},
      {"it says nothing", std::nullopt, std::nullopt, true},
      {"it says nothing and has a compositor", std::nullopt, "wayland-0", false},
      {"it says nothing and names no compositor", "", "", true},
      {"it was started from a console", "tty", std::nullopt, true},
      {"its compositor was started from a console", "tty", "wayland-0", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    setVariable("XDG_SESSION_TYPE", row.type);
    setVariable("WAYLAND_DISPLAY", row.wayland);
    EXPECT_EQ(x11Session(), row.x11);
  }
}

}  // namespace
}  // namespace callmonitor::platform
