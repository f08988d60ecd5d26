// Texts as lists of code points, taken apart and put together by hand. The oracles use it so that
// they share nothing with the Unicode library of the program.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::oracle {

// The code points of well-formed UTF-8; absent for any other bytes.
[[nodiscard]] std::optional<std::vector<char32_t>> codePoints(std::string_view bytes);

// The code points of a text that is known to be well-formed.
[[nodiscard]] std::vector<char32_t> characters(std::string_view text);

[[nodiscard]] std::string utf8(const std::vector<char32_t>& text);

// A text in which everything but printable ASCII is escaped, for messages about a disagreement.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace callmonitor::oracle
