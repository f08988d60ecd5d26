// The window server's list.
#include <CoreGraphics/CoreGraphics.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "platform/macos/core_values.h"
#include "platform/macos/owned.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// A number that a process id cannot be is none.
std::optional<std::int32_t> processIdOf(CFTypeRef object) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::optional<std::int64_t> number = wholeNumberOf(object);
  if (!number || *number < Limits::min() || *number > Limits::max()) return std::nullopt;
  return static_cast<std::int32_t>(*number);
}

OnScreenWindow windowOf(CFDictionaryRef entry) {
  const auto value = [entry](CFStringRef key) { return CFDictionaryGetValue(entry, key); };
  return {processIdOf(value(kCGWindowOwnerPID)), textOf(value(kCGWindowName)),
          wholeNumberOf(value(kCGWindowLayer)), wholeNumberOf(value(kCGWindowNumber))};
}

}  // namespace

std::optional<std::vector<OnScreenWindow>> onScreenWindows() {
  const auto list = Owned<CFArrayRef>::taken(CGWindowListCopyWindowInfo(
      kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID));
  if (!list) return std::nullopt;
  std::vector<OnScreenWindow> windows;
  const CFIndex count = CFArrayGetCount(list.get());
  windows.reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i) {
    const auto entry =
        typed<CFDictionaryRef>(CFArrayGetValueAtIndex(list.get(), i), CFDictionaryGetTypeID());
    // Something that is no list of windows is not taken in parts.
    if (entry == nullptr) return std::nullopt;
    windows.push_back(windowOf(entry));
  }
  return windows;
}

}  // namespace callmonitor::platform
