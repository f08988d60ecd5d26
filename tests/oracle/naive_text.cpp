#include "oracle/naive_text.h"

#include <array>
#include <cstdlib>

namespace callmonitor::oracle {
namespace {

// How many bytes a code point takes in its shortest form; a longer form is not well-formed.
std::size_t lengthOf(char32_t point) {
  if (point < 0x80) return 1;
  if (point < 0x800) return 2;
  return point < 0x10000 ? 3 : 4;
}

}  // namespace

std::optional<std::vector<char32_t>> codePoints(std::string_view bytes) {
  std::vector<char32_t> points;
  for (std::size_t i = 0; i < bytes.size();) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    std::size_t length = 0;
    char32_t point = 0;
    if (first < 0x80) {
      length = 1;
      point = first;
    } else if (first >= 0xC0 && first < 0xE0) {
      length = 2;
      point = first & 0x1FU;
    } else if (first >= 0xE0 && first < 0xF0) {
      length = 3;
      point = first & 0x0FU;
    } else if (first >= 0xF0 && first < 0xF8) {
      length = 4;
      point = first & 0x07U;
    }
    if (length == 0 || i + length > bytes.size()) return std::nullopt;
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(bytes[i + k]);
      if (next < 0x80 || next >= 0xC0) return std::nullopt;
      point = point * 64 + (next - 0x80U);
    }
    const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
    if (lengthOf(point) != length || surrogate || point > 0x10FFFF) return std::nullopt;
    points.push_back(point);
    i += length;
  }
  return points;
}

std::vector<char32_t> characters(std::string_view text) {
  std::optional<std::vector<char32_t>> points = codePoints(text);
  if (!points) std::abort();  // an oracle that was asked what it cannot know
  return *points;
}

std::string utf8(const std::vector<char32_t>& text) {
  constexpr std::array<unsigned, 5> leads{0, 0x00, 0xC0, 0xE0, 0xF0};
  std::string bytes;
  for (const char32_t point : text) {
    const std::size_t length = lengthOf(point);
    const std::size_t shift = 6 * (length - 1);
    bytes += static_cast<char>(leads.at(length) | (point >> shift));
    for (std::size_t k = 1; k < length; ++k) {
      bytes += static_cast<char>(0x80U | ((point >> (shift - 6 * k)) & 0x3FU));
    }
  }
  return bytes;
}

std::string printable(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && c != '\\') {
      shown += c;
    } else {
      shown += std::string("\\x") + digits[byte / 16] + digits[byte % 16];
    }
  }
  return shown;
}

}  // namespace callmonitor::oracle
