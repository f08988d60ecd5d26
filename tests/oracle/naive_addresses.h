// The address rules a second time, as plainly as they can be written: the path shapes taken apart
// by hand, addresses by the grammar of RFC 3986 alone. Nothing here may use the program's own
// rules.
#pragma once

#include <optional>
#include <string>

namespace callmonitor::oracle {

// A meeting's key, "meet:abc-defg-hij"; its provider is what stands before the first colon.
using Key = std::optional<std::string>;

[[nodiscard]] Key conference(const std::string& raw, bool allowLaunch);
[[nodiscard]] Key clientHost(const std::string& raw);

struct AreaIdentity {
  Key key;
  bool complete = false;
};
[[nodiscard]] AreaIdentity webAreaIdentity(int status, const std::optional<std::string>& raw);

[[nodiscard]] bool meetLandingPage(const std::string& raw);

}  // namespace callmonitor::oracle
