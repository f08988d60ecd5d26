// What the errors of the accessibility bus mean in the codes of the seam.
#pragma once

#include <cstdint>
#include <string_view>

namespace callmonitor::platform {

// The seam's code for a D-Bus error name. Only "unknown object" is a live answer that the element
// is gone; an application or bus that cannot be reached is `cannotComplete`, for its elements may
// well still exist. A name that is not listed is `failure`.
[[nodiscard]] std::int32_t codeOfBusError(std::string_view name);

// Whether the error says that the application did not answer in time, as opposed to being away.
[[nodiscard]] bool isTimeout(std::string_view name);

}  // namespace callmonitor::platform
