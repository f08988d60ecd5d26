// Text from a desktop is bytes that somebody else wrote; the seam promises valid UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace callmonitor::platform {

// `text` with every ill-formed sequence replaced by one U+FFFD for each maximal ill-formed part, as
// Unicode recommends: surrogates, overlong forms and code points above U+10FFFF are ill-formed.
// Well-formed text comes back unchanged.
[[nodiscard]] std::string repairedUtf8(std::string_view text);

// UTF-8 for text in ISO 8859-1, the encoding of the oldest window names.
[[nodiscard]] std::string utf8FromLatin1(std::string_view text);

}  // namespace callmonitor::platform
