// The windows of an application as its accessibility tree shows them. A browser has more frames
// than windows, so under a window server a frame is a window only with a server's window behind it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/accessible_object.h"

namespace callmonitor::platform {

struct Desktop;

// Which server's window a frame was found to belong to. A pair lasts as long as the server's
// window: names change all the time, and a window must not go and come with them.
struct FrameMemory {
  std::uint64_t generation = 0;
  std::map<ObjectName, std::uint32_t> windowOf;
};

// A frame that is a window. The number is absent where the desktop has no window numbers.
struct FrameWindow {
  ObjectName frame;
  std::optional<std::uint32_t> number;
};

// The application's windows in the order of its tree; `target` is its root object. Whatever leaves
// a doubt about the list is a failure, for a window missing from it counts as closed.
[[nodiscard]] Answer<std::vector<FrameWindow>> readWindows(Desktop& desktop,
                                                           const BusTarget& target,
                                                           std::int32_t pid);

// The window in front, if it is one of this application's; `code::noValue` when it is not or nobody
// can tell.
[[nodiscard]] Answer<ObjectName> readFocusedWindow(Desktop& desktop, const BusTarget& target,
                                                   std::int32_t pid);

// The name of a frame's window as the window server shows it, so that it is equal to the name in
// the list of windows: an accessible name may say more. Absent for a frame without such a window.
[[nodiscard]] std::optional<std::string> shownName(Desktop& desktop, const ObjectName& frame);

}  // namespace callmonitor::platform
