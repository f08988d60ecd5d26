// One table-free decoder: the second byte's range is what tells overlong forms, surrogates and
// too-large code points apart.
#include "platform/linux/utf8.h"

#include <cstddef>

namespace callmonitor::platform {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// What a lead byte asks of the bytes behind it.
struct Lead {
  std::size_t length = 0;  // of the whole sequence; 0 for a byte that cannot begin one
  unsigned char low = 0x80;
  unsigned char high = 0xBF;  // the range of the second byte
};

Lead leadOf(unsigned char byte) {
  if (byte < 0x80) return {1};
  if (byte >= 0xC2 && byte <= 0xDF) return {2};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {3};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {4};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {};
}

}  // namespace

std::string repairedUtf8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    const Lead lead = leadOf(static_cast<unsigned char>(text[at]));
    std::size_t taken = 1;
    while (taken < lead.length && at + taken < text.size()) {
      const auto byte = static_cast<unsigned char>(text[at + taken]);
      const bool second = taken == 1;
      if (byte < (second ? lead.low : 0x80) || byte > (second ? lead.high : 0xBF)) break;
      ++taken;
    }
    if (lead.length != 0 && taken == lead.length) {
      result.append(text.substr(at, taken));
    } else {
      result.append(replacement);
    }
    at += taken;
  }
  return result;
}

std::string utf8FromLatin1(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      result.push_back(character);
    } else {
      result.push_back(static_cast<char>(0xC0 | (byte >> 6)));
      result.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
  }
  return result;
}

}  // namespace callmonitor::platform
