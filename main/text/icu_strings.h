// UTF-8 to ICU's own strings, for the files of this room that call ICU.
#pragma once

#include <unicode/unistr.h>

#include <cstdint>
#include <string_view>

namespace callmonitor {

// Bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] inline icu::UnicodeString icuString(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

}  // namespace callmonitor
