// Whose a window is. A process number means something on one machine only, and a window may belong
// to a program of another.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace callmonitor::platform {

// The process on this machine, called `host`, that owns a window with the properties `pid`
// (_NET_WM_PID) and `machine` (WM_CLIENT_MACHINE). Absent when the window names no process, or one
// of another machine; a window that names no machine is taken to be of this one. Host names are the
// same in either case of their letters.
[[nodiscard]] std::optional<std::int32_t> ownerHere(std::optional<std::uint32_t> pid,
                                                    std::optional<std::string_view> machine,
                                                    std::string_view host);

}  // namespace callmonitor::platform
