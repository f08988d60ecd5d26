// The window server: which windows there are, whose they are, where they are, which one is active.
//
// Nothing here may stop the program: every exchange with the server has a deadline, and a server
// that hangs or dies only makes the answers absent until it can be reached again.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/window_match.h"

namespace callmonitor::platform {

// One window that the window manager manages.
struct ClientWindow {
  std::uint32_t id = 0;
  std::optional<std::int32_t> pid;  // of a process of this machine
  std::optional<std::string> name;  // valid UTF-8, direction marks removed
  bool normal = false;    // a window of an application: no dock, desktop, menu or splash screen
  bool onScreen = false;  // mapped with all its ancestors, and not minimised
  std::optional<Extents> extents;
};

// A connection to the window server, made and remade as needed.
struct X11Connection;
[[nodiscard]] std::shared_ptr<X11Connection> makeX11Connection();

// Whether this desktop's windows are the window server's at all. In a Wayland session the server
// knows only the windows of programs that cannot do without it, which is as good as none.
[[nodiscard]] bool x11Session();

// The window manager's list in its own order, oldest window first. Absent when there is no server
// on this machine, no window manager, or no answer in time.
[[nodiscard]] std::optional<std::vector<ClientWindow>> clientWindows(X11Connection& x11);

// The window in front; absent when there is none or nobody knows.
[[nodiscard]] std::optional<std::uint32_t> activeWindow(X11Connection& x11);

// The process of this machine that says it owns the window; absent when none does or the window is
// gone.
[[nodiscard]] std::optional<std::int32_t> windowProcess(X11Connection& x11, std::uint32_t window);

// The window's name as in `ClientWindow`; absent when it has none or is gone.
[[nodiscard]] std::optional<std::string> windowName(X11Connection& x11, std::uint32_t window);

}  // namespace callmonitor::platform
