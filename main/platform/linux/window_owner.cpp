// Two comparisons.
#include "platform/linux/window_owner.h"

#include <limits>

#include "text/unicode.h"

namespace callmonitor::platform {

std::optional<std::int32_t> ownerHere(std::optional<std::uint32_t> pid,
                                      std::optional<std::string_view> machine,
                                      std::string_view host) {
  constexpr auto highest = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
  if (!pid || *pid == 0 || *pid > highest) return std::nullopt;
  if (machine && lowerCased(*machine) != lowerCased(host)) return std::nullopt;
  return static_cast<std::int32_t>(*pid);
}

}  // namespace callmonitor::platform
