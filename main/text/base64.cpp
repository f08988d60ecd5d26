#include "text/base64.h"

#include <cstdint>

namespace callmonitor {
namespace {

// The six bits of one character; absent outside the standard alphabet.
std::optional<std::uint32_t> sextet(char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<std::uint32_t>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<std::uint32_t>(c - 'a' + 26);
  if (c >= '0' && c <= '9') return static_cast<std::uint32_t>(c - '0' + 52);
  if (c == '+') return 62;
  if (c == '/') return 63;
  return std::nullopt;
}

}  // namespace

std::optional<std::string> base64Decoded(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;
  const std::string_view digits = text.substr(0, text.size() - padding);

  std::string bytes;
  bytes.reserve(digits.size() / 4 * 3 + 2);
  std::uint32_t bits = 0;
  int held = 0;  // how many low bits of `bits` are not yet written
  for (const char c : digits) {
    const std::optional<std::uint32_t> value = sextet(c);
    if (!value) return std::nullopt;
    bits = (bits << 6 | *value) & 0xFFFF;
    held += 6;
    if (held >= 8) {
      held -= 8;
      bytes += static_cast<char>(static_cast<unsigned char>(bits >> held));
    }
  }
  return bytes;
}

}  // namespace callmonitor
