#include "macos/standins/text.h"

#include <array>
#include <cstdint>

namespace callmonitor::standins {
namespace {

constexpr char32_t firstHigh = 0xD800;
constexpr char32_t firstLow = 0xDC00;
constexpr char32_t afterLow = 0xE000;
constexpr char32_t firstPair = 0x10000;
constexpr char32_t afterLast = 0x110000;

// By the number of bytes: the bits of the first byte, and the smallest code point.
struct Form {
  unsigned char mark;
  unsigned char mask;
  char32_t smallest;
};
constexpr std::array<Form, 4> forms{
    {{0x00, 0x80, 0}, {0xC0, 0xE0, 0x80}, {0xE0, 0xF0, 0x800}, {0xF0, 0xF8, 0x10000}}};

// Takes one code point off the front; absent where there is none.
std::optional<char32_t> takeCodePoint(std::string_view& rest) {
  const auto first = static_cast<unsigned char>(rest.front());
  for (std::size_t length = 1; length <= forms.size(); ++length) {
    const Form& form = forms.at(length - 1);
    if ((first & form.mask) != form.mark) continue;
    if (rest.size() < length) return std::nullopt;
    char32_t point = first & static_cast<unsigned char>(~form.mask);
    for (std::size_t i = 1; i < length; ++i) {
      const auto byte = static_cast<unsigned char>(rest[i]);
      if ((byte & 0xC0U) != 0x80U) return std::nullopt;
      point = (point << 6U) | (byte & 0x3FU);
    }
    const bool surrogate = point >= firstHigh && point < afterLow;
    if (point < form.smallest || point >= afterLast || surrogate) return std::nullopt;
    rest.remove_prefix(length);
    return point;
  }
  return std::nullopt;
}

std::string encoded(char32_t point) {
  std::size_t length = forms.size();
  while (length > 1 && point < forms.at(length - 1).smallest) --length;
  std::string bytes(length, '\0');
  for (std::size_t i = length - 1; i > 0; --i) {
    bytes[i] = static_cast<char>(0x80U | (point & 0x3FU));
    point >>= 6U;
  }
  bytes[0] = static_cast<char>(forms.at(length - 1).mark | point);
  return bytes;
}

}  // namespace

std::optional<std::u16string> utf16Of(std::string_view utf8) {
  std::u16string units;
  while (!utf8.empty()) {
    const std::optional<char32_t> point = takeCodePoint(utf8);
    if (!point) return std::nullopt;
    if (*point < firstPair) {
      units += static_cast<char16_t>(*point);
    } else {
      units += static_cast<char16_t>(firstHigh + ((*point - firstPair) >> 10U));
      units += static_cast<char16_t>(firstLow + ((*point - firstPair) & 0x3FFU));
    }
  }
  return units;
}

std::optional<Character> characterAt(std::u16string_view units, std::size_t at) {
  const char32_t unit = units[at];
  if (unit < firstHigh || unit >= afterLow) return Character{encoded(unit), 1};
  if (unit >= firstLow || at + 1 >= units.size()) return std::nullopt;
  const char32_t low = units[at + 1];
  if (low < firstLow || low >= afterLow) return std::nullopt;
  return Character{encoded(firstPair + ((unit - firstHigh) << 10U) + (low - firstLow)), 2};
}

std::string utf8Of(std::u16string_view units) {
  std::string text;
  for (std::size_t at = 0; at < units.size();) {
    const std::optional<Character> character = characterAt(units, at);
    if (!character) return text;
    text += character->utf8;
    at += character->units;
  }
  return text;
}

}  // namespace callmonitor::standins
