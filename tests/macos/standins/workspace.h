// The methods of the workspace, the running applications and the process information.
#pragma once

#include <string_view>

#include "macos/standins/objects.h"

namespace callmonitor::standins {

using AnyMethod = void (*)();

// The function behind a method of an object; ends the process where there is none.
[[nodiscard]] AnyMethod methodOf(const Object& receiver, std::string_view selector);

}  // namespace callmonitor::standins
