// The launch page of Teams carries the meeting's address in its query, as JSON in base64.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace callmonitor {

// The address that a launch page's query names, not yet judged. Absent when the first query item
// named "coords" is missing, empty, longer than 8192 UTF-8 bytes, not base64 (of either alphabet,
// padding optional), not a JSON object, or without a text under "meetingUrl".
[[nodiscard]] std::optional<std::string> teamsLaunchAddress(std::string_view query);

}  // namespace callmonitor
