// Meeting identity from web addresses. Strict on purpose: secure addresses on the providers' own
// hosts in the known path shapes, and nothing else. Every function is total and pure; a refusal is
// an absent result.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "identity/conference.h"

namespace callmonitor {

// The meeting that an address names. `allowLaunch` permits one level of unwrapping of a Teams
// launch page, which carries the meeting's address in its query.
[[nodiscard]] std::optional<Conference> conference(std::string_view raw, bool allowLaunch);

// The meeting that an address names, or else the provider whose host it is on, under one fixed key
// a provider: "meet:meet.google.com", "zoom:zoom.us", "teams:teams.microsoft.com".
[[nodiscard]] std::optional<Conference> clientHost(std::string_view raw);

// What a web area's address says about the meeting that it shows.
struct WebAreaIdentity {
  std::optional<Conference> conference;
  // The read was conclusive. Complete without a conference: the area is known to show no meeting.
  bool complete = false;
};

// `status` is the code of reading the address (0 is success), `raw` its text where it has one. A
// failed read, an empty or unparsable address, and a web address without a host (a page that is
// still loading) are inconclusive.
[[nodiscard]] WebAreaIdentity webAreaIdentity(std::int32_t status,
                                              const std::optional<std::string>& raw);

// Whether an address is one of the pages that a Meet tab shows between meetings. Scheme and host
// are compared exactly as written.
[[nodiscard]] bool meetLandingPage(std::string_view raw);

// The meeting that a Meet tab keeps while it shows a landing page: that of the one tracked call on
// this very surface. `raw` is the surface's address; `launchedAt` is in seconds since 1970. `calls`
// is any range of records with `pid`, `launchedAt`, `window`, `element` and `conference`. Absent
// when no call or more than one matches: two candidates are no reason to guess.
template <class Calls>
[[nodiscard]] std::optional<Conference> retainedMeetIdentity(const std::optional<std::string>& raw,
                                                             std::int32_t pid, double launchedAt,
                                                             std::string_view window,
                                                             std::string_view element,
                                                             const Calls& calls) {
  if (!raw || !meetLandingPage(*raw)) return std::nullopt;
  std::optional<Conference> retained;
  for (const auto& call : calls) {
    if (call.pid != pid || call.launchedAt != launchedAt || call.window != window ||
        call.element != element || call.conference.provider != "meet") {
      continue;
    }
    if (retained) return std::nullopt;
    retained = call.conference;
  }
  return retained;
}

}  // namespace callmonitor
