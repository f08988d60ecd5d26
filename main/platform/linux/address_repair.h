// Browsers write page addresses by a more lenient standard than the strict one that addresses are
// parsed by here. What they leave raw in a query or fragment is percent-encoded before it goes on.
#pragma once

#include <string>
#include <string_view>

namespace callmonitor::platform {

// `address` with `{ } | ^ \ [ ] "`, backtick, and every "%" that two hexadecimal digits do not
// follow, percent-encoded in the query and in the fragment. Scheme, authority and path stay as they
// are: there such a character makes an address that is to be refused, not repaired.
[[nodiscard]] std::string repairedAddress(std::string_view address);

}  // namespace callmonitor::platform
