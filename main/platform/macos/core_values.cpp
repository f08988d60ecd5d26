#include "platform/macos/core_values.h"

#include <array>
#include <cstddef>

namespace callmonitor::platform {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::size_t pieceSize = 512;                    // bytes

}  // namespace

// A conversion of the whole string fails for one lone surrogate anywhere in it, so it is converted
// as far as it goes. The pieces are larger than any character: one of no characters is due to a
// surrogate.
std::optional<std::string> textOf(CFTypeRef object) {
  const auto string = typed<CFStringRef>(object, CFStringGetTypeID());
  if (string == nullptr) return std::nullopt;
  std::string text;
  std::array<UInt8, pieceSize> piece{};
  const CFIndex length = CFStringGetLength(string);
  for (CFIndex at = 0; at < length;) {
    CFIndex used = 0;
    const CFIndex converted =
        CFStringGetBytes(string, CFRangeMake(at, length - at), kCFStringEncodingUTF8,
                         /*lossByte=*/0, /*isExternalRepresentation=*/0, piece.data(),
                         static_cast<CFIndex>(piece.size()), &used);
    if (converted > 0) {
      text.append(piece.begin(), piece.begin() + used);
      at += converted;
    } else {
      text.append(replacement);
      ++at;
    }
  }
  return text;
}

std::optional<std::int64_t> wholeNumberOf(CFTypeRef object) {
  const auto number = typed<CFNumberRef>(object, CFNumberGetTypeID());
  SInt64 value = 0;
  // False also where a fraction would be lost.
  if (number == nullptr || CFNumberGetValue(number, kCFNumberSInt64Type, &value) == 0) {
    return std::nullopt;
  }
  return value;
}

std::optional<bool> flagOf(CFTypeRef object) {
  const auto boolean = typed<CFBooleanRef>(object, CFBooleanGetTypeID());
  if (boolean == nullptr) return std::nullopt;
  return CFBooleanGetValue(boolean) != 0;
}

std::optional<std::string> addressOf(CFTypeRef object) {
  const auto url = typed<CFURLRef>(object, CFURLGetTypeID());
  if (url == nullptr) return std::nullopt;
  const auto absolute = Owned<CFURLRef>::taken(CFURLCopyAbsoluteURL(url));
  return absolute ? textOf(CFURLGetString(absolute.get())) : std::nullopt;
}

Owned<CFStringRef> stringOf(std::string_view text) {
  const auto* bytes = reinterpret_cast<const UInt8*>(text.data());
  return Owned<CFStringRef>::taken(CFStringCreateWithBytes(
      kCFAllocatorDefault, bytes, static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8,
      /*isExternalRepresentation=*/0));
}

}  // namespace callmonitor::platform
