// Tells a monitor's stream in short: what was said, when, and how often, without anything that is
// different in every run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::scenarios {

// One line for everything that was said in one cycle or, the same again, in several cycles running:
//
//   0s..5s  6x  trusted
//   1s..3s  3x  S1 joined 1..3 meet:abc-defg-hij "Standup" media com.google.Chrome window=1
//
// Times are those of the health record that closes a cycle, in seconds from `startWallClock`
// (seconds since 1970). Sessions are S1, S2, ... and lobbies L1, L2, ... in order of appearance.
// Lines stand in the order in which their first record was written. What the form of a stream
// forbids is told as a line that begins with "WRONG".
[[nodiscard]] std::vector<std::string> story(const std::vector<std::string>& stream,
                                             double startWallClock);

// The lines of an expectation that count: without comments, empty lines and surplus blanks.
[[nodiscard]] std::vector<std::string> tellingLines(std::string_view text);

}  // namespace callmonitor::scenarios
