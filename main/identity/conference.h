// The identity of one meeting.
#pragma once

#include <string>

namespace callmonitor {

// Equal in both fields means the same meeting.
struct Conference {
  std::string provider;  // "meet", "zoom", "teams", "webex", or "application" for a generic client
  std::string key;       // provider, ":", meeting id; empty where a client shows no identity
  friend bool operator==(const Conference&, const Conference&) = default;
};

}  // namespace callmonitor
