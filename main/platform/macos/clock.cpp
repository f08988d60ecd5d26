// Wall clock and random identifiers. The uptime is the process information's.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "platform/macos/core_values.h"
#include "platform/macos/owned.h"
#include "platform/platform.h"

namespace callmonitor::platform {

double wallClock() {
  return CFAbsoluteTimeGetCurrent() + kCFAbsoluteTimeIntervalSince1970;
}

std::string randomUUID() {
  const auto uuid = Owned<CFUUIDRef>::taken(CFUUIDCreate(kCFAllocatorDefault));
  // The string form is upper-case.
  const auto string =
      uuid ? Owned<CFStringRef>::taken(CFUUIDCreateString(kCFAllocatorDefault, uuid.get()))
           : Owned<CFStringRef>();
  const std::optional<std::string> text = textOf(string.get());
  if (!text) {
    // Identifiers that repeat would merge calls.
    std::fputs("call-monitor: the system gives no identifier\n", stderr);
    std::abort();
  }
  return *text;
}

}  // namespace callmonitor::platform
