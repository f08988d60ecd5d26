// The findings as text for people, who copy it into a report.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "doctor/findings.h"

namespace callmonitor::doctor {

// What a window's title may give away is shown only where somebody asked for it.
enum class Titles { lengths, shown };

// The whole report, its last line ended.
[[nodiscard]] std::string reportText(const Findings& findings, Titles titles);

// A result code with its meaning: "-25204 (no answer in time)".
[[nodiscard]] std::string codeText(std::int32_t code);

// A time in seconds since 1970 as UTC, to the second; "not a time" for what no calendar holds.
[[nodiscard]] std::string timeText(double secondsSince1970);

// A text of another program as it may stand in a line: what could end the line, talk to a terminal
// or turn the direction of writing becomes \u{...}.
[[nodiscard]] std::string lineText(std::string_view text);

}  // namespace callmonitor::doctor
