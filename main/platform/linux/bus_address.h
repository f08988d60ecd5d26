// Which addresses told by others may be connected to.
#pragma once

#include <string_view>

namespace callmonitor::platform {

// Whether every alternative of a D-Bus address is a socket of this machine, given by its path or
// its abstract name. Other kinds of address would run a command or leave the machine, and whoever
// tells an address would choose which; an alternative that cannot be understood is no socket. False
// for an empty address.
[[nodiscard]] bool namesLocalSockets(std::string_view address);

}  // namespace callmonitor::platform
