// The list of windows on the screen, from the window server.
#include "platform/linux/desktop.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Docks and desktops are managed windows too, but none that a person would call a window.
constexpr std::int64_t normalLayer = 0;
constexpr std::int64_t otherLayer = 1;

}  // namespace

std::optional<std::vector<OnScreenWindow>> onScreenWindows() {
  const auto windows = clientWindows(*desktop().x11);
  if (!windows) return std::nullopt;
  std::vector<OnScreenWindow> list;
  for (const ClientWindow& each : *windows) {
    if (!each.onScreen) continue;
    list.push_back({each.pid, each.name, each.normal ? normalLayer : otherLayer, each.id});
  }
  return list;
}

}  // namespace callmonitor::platform
