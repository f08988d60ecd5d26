// UTF-8 and the units that strings of the frameworks are made of.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace callmonitor::standins {

// Absent for a text that is not valid UTF-8.
[[nodiscard]] std::optional<std::u16string> utf16Of(std::string_view utf8);

// One character of a string of units.
struct Character {
  std::string utf8;
  std::size_t units = 1;
};
// Absent where a surrogate stands without its companion.
[[nodiscard]] std::optional<Character> characterAt(std::u16string_view units, std::size_t at);

// A string of units without lone surrogates.
[[nodiscard]] std::string utf8Of(std::u16string_view units);

}  // namespace callmonitor::standins
