// Standard base64, as one strict decoder. No library at hand is strict about padding and lenient
// about pad bits at once.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace callmonitor {

// The decoded bytes of standard-alphabet base64 whose length is a multiple of 4. Absent for any
// other length, a character outside the alphabet, padding that is not one or two "=" at the very
// end. Bits left over in the last character before the padding are ignored, whatever they are.
[[nodiscard]] std::optional<std::string> base64Decoded(std::string_view text);

}  // namespace callmonitor
