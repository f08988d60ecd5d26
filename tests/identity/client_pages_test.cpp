// What a page says when it names no meeting: the client it belongs to, whether the read was
// conclusive, and the meeting that a landing page keeps.
#include <gtest/gtest.h>

#include <cmath>

#include "identity/meeting_identity.h"
#include "support/meeting_key.h"

namespace callmonitor {
namespace {

using test::keyOf;

struct ClientCase {
  std::string_view sentence;
  std::string_view raw;
  std::optional<std::string> key;
};

TEST(ClientHost, IsTheMeetingOrElseTheProvidersOneKey) {
  const ClientCase cases[] = {
      {"a meeting comes first", "https://meet.google.com/abc-defg-hij", "meet:abc-defg-hij"},
      {"the root of Meet", "https://meet.google.com/", "meet:meet.google.com"},
      {"Meet without a path", "https://meet.google.com", "meet:meet.google.com"},
      {"Meet's host in capitals", "https://MEET.google.com/new", "meet:meet.google.com"},
      {"Zoom's web client on a sub-domain", "https://us02web.zoom.us/wc/", "zoom:zoom.us"},
      {"the root of Zoom", "https://zoom.us/", "zoom:zoom.us"},
      {"Zoom's alternative domain has the same key", "https://app.zoom.com/", "zoom:zoom.us"},
      {"the root of the Teams work host", "https://teams.microsoft.com/",
       "teams:teams.microsoft.com"},
      {"the Teams consumer host has the same key", "https://teams.live.com/",
       "teams:teams.microsoft.com"},
      {"the Teams cloud host has the same key", "https://teams.cloud.microsoft/v2/",
       "teams:teams.microsoft.com"},
      {"a launch page that names no meeting",
       "https://teams.live.com/light-meetings/launch?coords=invalid", "teams:teams.microsoft.com"},
      {"a launch page that names a meeting",
       "https://teams.live.com/light-meetings/launch?coords="
       "eyJtZWV0aW5nVXJsIjogImh0dHBzOi8vdGVhbXMubGl2ZS5jb20vbWVldC85MzEyMzQ1Njc4OTAxP3A9QWJDZEVm"
       "R2hJaiJ9",
       "teams:9312345678901"},
      {"port 443", "https://zoom.us:443/", "zoom:zoom.us"},
      {"a path that does not decode is not looked at", "https://meet.google.com/%FF",
       "meet:meet.google.com"},
      {"http", "http://meet.google.com/", std::nullopt},
      {"a further domain", "https://meet.google.com.example.org/", std::nullopt},
      {"a user", "https://user@zoom.us/", std::nullopt},
      {"port 444", "https://teams.live.com:444/", std::nullopt},
      {"another service of the same company", "https://www.google.com/meet/abc-defg-hij",
       std::nullopt},
      {"a foreign root", "https://example.org/", std::nullopt},
      {"a blank page", "about:blank", std::nullopt},
      {"what is no address", "https://meet.google.com/ x", std::nullopt},
      {"nothing", "", std::nullopt},
  };
  for (const ClientCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(keyOf(clientHost(row.raw)), row.key);
  }
}

struct AreaCase {
  std::string_view sentence;
  std::int32_t status;
  std::optional<std::string> raw;
  bool complete;
  std::optional<std::string> key;
};

TEST(WebAreaIdentity, IsConclusiveOnlyForAnAddressThatWasReadAndLoaded) {
  const std::string meeting = "https://meet.google.com/abc-defg-hij";
  const AreaCase cases[] = {
      {"a meeting", 0, meeting, true, "meet:abc-defg-hij"},
      {"a launch page is unwrapped", 0,
       "https://teams.live.com/light-meetings/launch?coords="
       "eyJtZWV0aW5nVXJsIjogImh0dHBzOi8vdGVhbXMubGl2ZS5jb20vbWVldC85MzEyMzQ1Njc4OTAxP3A9QWJDZEVm"
       "R2hJaiJ9",
       true, "teams:9312345678901"},
      {"another page", 0, "https://example.org/", true, std::nullopt},
      {"a page over http", 0, "http://meet.google.com/abc-defg-hij", true, std::nullopt},
      {"a landing page", 0, "https://meet.google.com/landing", true, std::nullopt},
      {"a blank page", 0, "about:blank", true, std::nullopt},
      {"a browser's own page", 0, "chrome://newtab/", true, std::nullopt},
      {"a file", 0, "file:///home/page.html", true, std::nullopt},
      {"a page in data", 0, "data:text/html,x", true, std::nullopt},
      {"a failed read", -25200, meeting, false, std::nullopt},
      {"a read that timed out", -25204, meeting, false, std::nullopt},
      {"an attribute that is not there", -25205, std::nullopt, false, std::nullopt},
      {"an attribute without a value", -25212, std::nullopt, false, std::nullopt},
      {"success without a text", 0, std::nullopt, false, std::nullopt},
      {"an empty text", 0, "", false, std::nullopt},
      {"what is no address", 0, "https://h/ x", false, std::nullopt},
      {"no scheme", 0, "meet.google.com/abc-defg-hij", false, std::nullopt},
      {"an empty scheme", 0, "://meet.google.com/", false, std::nullopt},
      {"https without a host", 0, "https://", false, std::nullopt},
      {"https with a path and no host", 0, "https:///abc-defg-hij", false, std::nullopt},
      {"https without an authority", 0, "https:abc", false, std::nullopt},
      {"https with a port and no host", 0, "https://:443/", false, std::nullopt},
      {"http without a host", 0, "http:///", false, std::nullopt},
      {"a web scheme in capitals without a host", 0, "HTTPS:///x", false, std::nullopt},
  };
  for (const AreaCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const WebAreaIdentity identity = webAreaIdentity(row.status, row.raw);
    EXPECT_EQ(identity.complete, row.complete);
    EXPECT_EQ(keyOf(identity.conference), row.key);
  }
}

struct PageCase {
  std::string_view sentence;
  std::string_view raw;
  bool landing;
};

TEST(MeetLandingPage, IsOneOfFourPathsOnTheHostAsWritten) {
  const PageCase cases[] = {
      {"the root", "https://meet.google.com/", true},
      {"the home page", "https://meet.google.com/home", true},
      {"the landing page", "https://meet.google.com/landing", true},
      {"the landing page below /meet", "https://meet.google.com/meet/landing", true},
      {"a query and a fragment do not matter", "https://meet.google.com/landing?authuser=0#x",
       true},
      {"an escaped letter", "https://meet.google.com/l%61nding", true},
      {"an escaped slash", "https://meet.google.com/meet%2Flanding", true},
      {"port 443", "https://meet.google.com:443/", true},
      {"an empty port", "https://meet.google.com:/", true},
      {"no path at all", "https://meet.google.com", false},
      {"a slash behind", "https://meet.google.com/landing/", false},
      {"home below /meet", "https://meet.google.com/meet/home", false},
      {"capitals in the path", "https://meet.google.com/Landing", false},
      {"a line feed behind", "https://meet.google.com/landing%0A", false},
      {"another page", "https://meet.google.com/new", false},
      {"a meeting", "https://meet.google.com/abc-defg-hij", false},
      {"a path that does not decode", "https://meet.google.com/%FF", false},
      {"a scheme in capitals", "HTTPS://meet.google.com/", false},
      {"a host in capitals", "https://MEET.google.com/", false},
      {"http", "http://meet.google.com/", false},
      {"no scheme", "//meet.google.com/", false},
      {"port 444", "https://meet.google.com:444/", false},
      {"a user", "https://user@meet.google.com/", false},
      {"an empty user", "https://@meet.google.com/", false},
      {"a foreign prefix", "https://xmeet.google.com/", false},
      {"a further domain", "https://meet.google.com.example.org/", false},
      {"another provider", "https://teams.live.com/", false},
      {"what is no address", "https://meet.google.com/ ", false},
      {"nothing", "", false},
  };
  for (const PageCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(meetLandingPage(row.raw), row.landing);
  }
}

struct TrackedCall {
  std::int32_t pid = 42;
  double launchedAt = 1700000000.5;
  std::string window = "window";
  std::string element = "area";
  Conference conference{"meet", "meet:abc-defg-hij"};
};

struct RetainedCase {
  std::string_view sentence;
  std::optional<std::string> raw;
  std::vector<TrackedCall> calls;
  std::optional<std::string> key;
};

TEST(RetainedMeetIdentity, IsThatOfTheOneMeetCallOnTheVerySurface) {
  const std::string landing = "https://meet.google.com/landing";
  const double launch = 1700000000.5;
  const TrackedCall call;
  const RetainedCase cases[] = {
      {"one matching call", landing, {call}, "meet:abc-defg-hij"},
      {"one matching among others",
       landing,
       {{43}, call, {42, launch, "other"}},
       "meet:abc-defg-hij"},
      {"no calls", landing, {}, std::nullopt},
      {"two matching calls",
       landing,
       {call, {42, launch, "window", "area", {"meet", "meet:xyz-xyzx-xyz"}}},
       std::nullopt},
      {"the same meeting twice", landing, {call, call}, std::nullopt},
      {"three matching calls", landing, {call, call, call}, std::nullopt},
      {"another process", landing, {{43}}, std::nullopt},
      {"a later launch", landing, {{42, std::nextafter(launch, 2e9)}}, std::nullopt},
      {"an earlier launch", landing, {{42, std::nextafter(launch, 0)}}, std::nullopt},
      {"another window", landing, {{42, launch, "other"}}, std::nullopt},
      {"another element", landing, {{42, launch, "window", "other"}}, std::nullopt},
      {"another provider",
       landing,
       {{42, launch, "window", "area", {"teams", "teams:x"}}},
       std::nullopt},
      {"another provider beside it does not count",
       landing,
       {call, {42, launch, "window", "area", {"teams", "teams:x"}}},
       "meet:abc-defg-hij"},
      {"no address", std::nullopt, {call}, std::nullopt},
      {"a page that is no landing page", "https://meet.google.com/new", {call}, std::nullopt},
      {"a foreign page", "https://example.org/landing", {call}, std::nullopt},
      {"a scheme in capitals", "HTTPS://meet.google.com/landing", {call}, std::nullopt},
  };
  for (const RetainedCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(keyOf(retainedMeetIdentity(row.raw, 42, launch, "window", "area", row.calls)),
              row.key);
  }
}

}  // namespace
}  // namespace callmonitor
