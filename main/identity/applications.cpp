#include "identity/applications.h"

#include <algorithm>
#include <array>

#include "text/pattern.h"
#include "text/unicode.h"

namespace callmonitor {
namespace {

constexpr std::array<std::string_view, 2> appShimPrefixes{"com.google.Chrome.app.",
                                                          "com.microsoft.edgemac.app."};
constexpr std::array<std::string_view, 2> chromiumBrowsers{"com.google.Chrome",
                                                           "com.microsoft.edgemac"};
constexpr std::array<std::string_view, 2> webViewNativeClients{"com.microsoft.teams2",
                                                               "com.microsoft.teams"};

// Longer identifiers are not reported.
constexpr std::size_t bundleIdLimit = 256;

// What follows a prefix: an optional profile name and the web app's own 32-letter identifier.
const Pattern& appShimSuffixPattern() {
  static const Pattern pattern("^(?:[A-Za-z0-9-]{1,80}-)?[a-p]{32}$");
  return pattern;
}

}  // namespace

std::optional<std::string> nativeProvider(std::string_view bundle) {
  const auto found = providers.find(bundle);
  return found == providers.end() ? std::nullopt : std::optional(found->second);
}

bool standaloneBrowser(std::string_view bundle) {
  return std::ranges::any_of(appShimPrefixes, [&](std::string_view prefix) {
    return bundle.starts_with(prefix) &&
           appShimSuffixPattern().foundIn(bundle.substr(prefix.size()));
  });
}

bool browserApplication(std::string_view bundle) {
  return browsers.contains(bundle) || standaloneBrowser(bundle);
}

bool webClientApplication(std::string_view bundle) {
  return browserApplication(bundle) || std::ranges::count(webViewNativeClients, bundle) > 0;
}

bool chromiumApplication(std::string_view bundle) {
  return std::ranges::count(chromiumBrowsers, bundle) > 0 || standaloneBrowser(bundle);
}

std::optional<std::string> observedApplicationBundleID(double expectedLaunch,
                                                       std::optional<double> actualLaunch,
                                                       const std::optional<std::string>& bundleID) {
  if (!(expectedLaunch > 0) || actualLaunch != expectedLaunch) return std::nullopt;
  if (!bundleID || bundleID->empty() || !shorterThan(*bundleID, bundleIdLimit)) return std::nullopt;
  return bundleID;
}

}  // namespace callmonitor
