// The Unicode operations that the rules need, over ICU. All texts are UTF-8; bytes that are not
// count as U+FFFD, so that no text can make a rule fail.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace callmonitor {

// Full Unicode lower-casing, in no particular language.
[[nodiscard]] std::string lowerCased(std::string_view text);

// The words of a text, joined with one ASCII space each. Words are parted by every character with
// the Unicode White_Space property; leading and trailing white space vanishes.
[[nodiscard]] std::string singleSpaced(std::string_view text);

// Whether a text has fewer than `limit` user-perceived characters (grapheme clusters).
[[nodiscard]] bool shorterThan(std::string_view text, std::size_t limit);

// The first `count` user-perceived characters of a text, the whole text when it has no more.
[[nodiscard]] std::string firstCharacters(std::string_view text, std::size_t count);

// A text as it may stand in a line for people: control characters, which could end the line or talk
// to a terminal, and whatever parts lines or turns the direction of writing become \u{...}.
[[nodiscard]] std::string controlsEscaped(std::string_view text);

// The number of UTF-16 code units that a text takes.
[[nodiscard]] std::size_t utf16Length(std::string_view text);

// Whether the bytes are well-formed UTF-8.
[[nodiscard]] bool validUtf8(std::string_view bytes);

}  // namespace callmonitor
