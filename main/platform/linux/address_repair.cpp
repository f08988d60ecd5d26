// A single pass from the first "?" or "#" to the end.
#include "platform/linux/address_repair.h"

#include <cctype>
#include <cstddef>

namespace callmonitor::platform {
namespace {

constexpr std::string_view rawCharacters = "{}|^\\[]\"`";

bool hexDigit(char character) {
  return std::isxdigit(static_cast<unsigned char>(character)) != 0;
}

void appendEncoded(std::string& out, char character) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(character);
  out.push_back('%');
  out.push_back(digits[byte >> 4]);
  out.push_back(digits[byte & 0x0F]);
}

}  // namespace

std::string repairedAddress(std::string_view address) {
  const std::size_t start = address.find_first_of("?#");
  if (start == std::string_view::npos) return std::string(address);
  std::string result(address.substr(0, start));
  for (std::size_t at = start; at < address.size(); ++at) {
    const char character = address[at];
    const bool brokenEscape =
        character == '%' &&
        (at + 2 >= address.size() || !hexDigit(address[at + 1]) || !hexDigit(address[at + 2]));
    if (brokenEscape || rawCharacters.find(character) != std::string_view::npos) {
      appendEncoded(result, character);
    } else {
      result.push_back(character);
    }
  }
  return result;
}

}  // namespace callmonitor::platform
