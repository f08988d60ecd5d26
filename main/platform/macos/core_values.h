// Plain values out of the frameworks' objects. An object is of any type until it has been asked:
// each of these gives nothing for an object of another type, and for NULL.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/macos/owned.h"

namespace callmonitor::platform {

// The object as one of a certain type, still belonging to whom it belonged to; NULL where it is of
// another.
template <class Reference>
[[nodiscard]] Reference typed(CFTypeRef object, CFTypeID type) {
  return object != nullptr && CFGetTypeID(object) == type ? static_cast<Reference>(object)
                                                          : nullptr;
}

// A string's text in valid UTF-8. A surrogate without its companion becomes U+FFFD.
[[nodiscard]] std::optional<std::string> textOf(CFTypeRef object);

// A number without a fraction that 64 bits hold. A Boolean is no number.
[[nodiscard]] std::optional<std::int64_t> wholeNumberOf(CFTypeRef object);

// A Boolean; a number is none.
[[nodiscard]] std::optional<bool> flagOf(CFTypeRef object);

// The absolute form of an address object, in valid UTF-8.
[[nodiscard]] std::optional<std::string> addressOf(CFTypeRef object);

// A string of the frameworks; owns nothing when the text is not valid UTF-8.
[[nodiscard]] Owned<CFStringRef> stringOf(std::string_view text);

}  // namespace callmonitor::platform
