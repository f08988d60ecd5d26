// How much heap this process holds, by its own count.
#pragma once

#include <cstddef>

namespace callmonitor::endurance {

// Bytes that were asked for and not given back yet, of everything that C++ code allocates.
[[nodiscard]] std::size_t liveBytes();

}  // namespace callmonitor::endurance
