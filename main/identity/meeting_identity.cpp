#include "identity/meeting_identity.h"

#include <algorithm>
#include <array>

#include "identity/meeting_address.h"
#include "identity/teams_launch.h"
#include "text/pattern.h"
#include "text/unicode.h"
#include "text/url_components.h"

namespace callmonitor {
namespace {

constexpr std::size_t addressLimit = 16384;  // UTF-8 bytes
constexpr std::size_t meetingIdLimit = 512;  // UTF-16 code units

constexpr std::string_view teamsLaunchPath = "/light-meetings/launch";
constexpr std::array<std::string_view, 2> teamsFragmentRoutePaths{"/v2", "/v2/"};
constexpr std::string_view teamsFragmentPrefix = "/meet/";

constexpr std::array<std::string_view, 4> MeetLandingPaths{"/", "/home", "/landing",
                                                           "/meet/landing"};

// Each is searched in the whole decoded path; the first group that took part is the meeting's id.
const Pattern& pathPattern(std::string_view provider) {
  static const Pattern meet("^/(?:meet/)?([a-zA-Z]{3}-[a-zA-Z]{4}-[a-zA-Z]{3})(?:/|$)");
  static const Pattern zoom("^/(?:j/|wc/(?:join/)?)([0-9]{6,15})(?:/|$)");
  static const Pattern teams(
      "^/(?:l/meetup-join/([^/]+)|(?:meet|v2/meet)/([a-zA-Z0-9_-]+))(?:/|$)");
  if (provider == "meet") return meet;
  return provider == "zoom" ? zoom : teams;
}

// The path that the consumer client of Teams hides in its fragment; absent when there is none.
std::optional<std::string> teamsFragmentRoute(const UrlComponents& url) {
  if (!url.fragment) return std::nullopt;
  const std::optional<std::string> fragment = percentDecoded(*url.fragment);
  if (!fragment || !fragment->starts_with(teamsFragmentPrefix)) return std::nullopt;
  return fragment->substr(0, fragment->find('?'));
}

// A launch page can only name a Teams meeting, and launch pages do not nest.
std::optional<Conference> launchedConference(const UrlComponents& url) {
  if (!url.query) return std::nullopt;
  const std::optional<std::string> inner = teamsLaunchAddress(*url.query);
  if (!inner) return std::nullopt;
  std::optional<Conference> meeting = conference(*inner, /*allowLaunch=*/false);
  if (!meeting || meeting->provider != "teams") return std::nullopt;
  return meeting;
}

}  // namespace

std::optional<Conference> conference(std::string_view raw, bool allowLaunch) {
  if (raw.size() > addressLimit) return std::nullopt;
  const std::optional<UrlComponents> url = urlComponents(raw);
  if (!url) return std::nullopt;
  const std::optional<std::string> host = secureHost(*url);
  if (!host) return std::nullopt;
  std::optional<std::string> path = percentDecoded(url->path);
  if (!path) return std::nullopt;
  const std::optional<std::string> provider = providerOfHost(*host);
  if (!provider) return std::nullopt;

  if (provider == "teams") {
    if (path == teamsLaunchPath) return allowLaunch ? launchedConference(*url) : std::nullopt;
    if (host == TeamsLiveHost && std::ranges::count(teamsFragmentRoutePaths, *path) > 0) {
      path = teamsFragmentRoute(*url).value_or(*path);
    }
  }

  std::optional<std::string> id = pathPattern(*provider).firstGroup(*path);
  if (!id) return std::nullopt;
  if (provider == "meet") id = lowerCased(*id);  // the others keep their case
  if (id->empty() || utf16Length(*id) > meetingIdLimit) return std::nullopt;
  return Conference{*provider, *provider + ":" + *id};
}

std::optional<Conference> clientHost(std::string_view raw) {
  if (std::optional<Conference> meeting = conference(raw, /*allowLaunch=*/true)) return meeting;
  const std::optional<UrlComponents> url = urlComponents(raw);
  const std::optional<std::string> host = url ? secureHost(*url) : std::nullopt;
  const std::optional<std::string> provider = host ? providerOfHost(*host) : std::nullopt;
  if (!provider) return std::nullopt;
  // One key for all of a provider's hosts, so that its pages count as one client.
  const std::string_view client = provider == "meet"   ? MeetHost
                                  : provider == "zoom" ? ZoomWebDomain
                                                       : TeamsWorkHost;
  return Conference{*provider, *provider + ":" + std::string(client)};
}

WebAreaIdentity webAreaIdentity(std::int32_t status, const std::optional<std::string>& raw) {
  if (status != 0 || !raw || raw->empty()) return {};
  const std::optional<UrlComponents> url = urlComponents(*raw);
  if (!url || !url->scheme || url->scheme->empty()) return {};
  const std::string scheme = lowerCased(*url->scheme);
  const bool web = scheme == "http" || scheme == "https";
  if (web && (!url->host || url->host->empty())) return {};
  return {conference(*raw, /*allowLaunch=*/true), true};
}

bool meetLandingPage(std::string_view raw) {
  const std::optional<UrlComponents> url = urlComponents(raw);
  if (!url || url->scheme != "https" || url->host != std::string(MeetHost)) return false;
  if (!plainAuthority(*url)) return false;
  const std::optional<std::string> path = percentDecoded(url->path);
  return path && std::ranges::count(MeetLandingPaths, *path) > 0;
}

}  // namespace callmonitor
