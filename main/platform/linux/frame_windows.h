// The windows of an application as its accessibility tree shows them. A browser has more frames
// than windows, so under a window server a frame is a window only with a server's window behind it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessible_object.h"
#include "platform/linux/x11.h"

namespace callmonitor::platform {

struct Desktop;

// A frame that is a window. The number is absent where the desktop has no window numbers.
struct FrameWindow {
  ObjectName frame;
  std::optional<std::uint32_t> number;
};

// An application and the window manager's list as it was read just before.
struct WindowedApplication {
  BusTarget root;
  std::int32_t pid = 0;
  std::optional<std::vector<ClientWindow>> listed;  // absent on a desktop without such a list
};

// The application's windows in the order of its tree. Whatever leaves a doubt about the list is a
// failure, for a window missing from it counts as closed.
[[nodiscard]] Answer<std::vector<FrameWindow>> readWindows(Desktop& desktop,
                                                           const WindowedApplication& application);

// The window in front, whose number is `active`, if it is one of this application's; else
// `code::noValue`.
[[nodiscard]] Answer<ObjectName> readFocusedWindow(Desktop& desktop,
                                                   const WindowedApplication& application,
                                                   std::uint32_t active);

// The name of a frame's window as the window server shows it, so that it is equal to the name in
// the list of windows: an accessible name may say more. Absent for a frame without such a window.
[[nodiscard]] std::optional<std::string> shownName(Desktop& desktop, const ObjectName& frame);

}  // namespace callmonitor::platform
