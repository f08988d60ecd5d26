// What an application is, judged by its bundle identifier alone, and which identifier may be
// reported for it. Comparisons are exact and case-sensitive.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor {

// The native meeting clients, with the provider of their meetings.
inline const std::map<std::string, std::string, std::less<>> providers{
    {"us.zoom.xos", "zoom"},
    {"com.microsoft.teams2", "teams"},
    {"com.microsoft.teams", "teams"},
    {"com.cisco.webexmeetingsapp", "webex"},
};

// The browsers whose web areas are read.
inline const std::set<std::string, std::less<>> browsers{
    "com.google.Chrome",
    "com.microsoft.edgemac",
    "com.apple.Safari",
};

// The provider of a native meeting client; absent for every other application.
[[nodiscard]] std::optional<std::string> nativeProvider(std::string_view bundle);

// A web app that a browser has installed: it runs under an identifier of its own, outside the
// browser's windows.
[[nodiscard]] bool standaloneBrowser(std::string_view bundle);

// A browser or one of its web apps.
[[nodiscard]] bool browserApplication(std::string_view bundle);

// An application whose windows can hold web areas with an address: browsers, their web apps, and
// native clients that are web views.
[[nodiscard]] bool webClientApplication(std::string_view bundle);

// An application whose web contents become readable only once its enhanced accessibility interface
// is switched on. Safari's always are.
[[nodiscard]] bool chromiumApplication(std::string_view bundle);

// The bundle identifier that may be reported for a process: `bundleID`, provided that the process
// is still the launch that was seen. Launch times are seconds since 1970. Absent when the expected
// launch is unknown (not above 0), the actual one is absent or differs at all, or the identifier is
// absent, empty, or of 256 or more characters.
[[nodiscard]] std::optional<std::string> observedApplicationBundleID(
    double expectedLaunch, std::optional<double> actualLaunch,
    const std::optional<std::string>& bundleID);

// The list begun at position `offset` modulo its length and continued from its start. A negative
// start is a programming error and ends the process.
template <class Item>
[[nodiscard]] std::vector<Item> rotated(const std::vector<Item>& items, long offset) {
  if (items.empty()) return items;
  const long start = offset % static_cast<long>(items.size());
  if (start < 0) std::abort();
  std::vector<Item> result(items.begin() + start, items.end());
  result.insert(result.end(), items.begin(), items.begin() + start);
  return result;
}

}  // namespace callmonitor
