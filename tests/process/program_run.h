// Runs the program itself, as whoever starts it does, and reads what it said.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace callmonitor::support {

using Json = nlohmann::json;

struct ProgramRun {
  std::string output;
  std::string errors;
  int status = -1;  // exit status; -1 when a signal ended the program
};

// Whether the program, when it is run here, finds no desktop whatever this machine has: on a system
// where a desktop is found through the environment.
inline constexpr bool desktopIsHidden = DESKTOP_IS_HIDDEN;

// Runs the program with these arguments until it ends. A run that takes longer than half a minute
// fails the test and is ended.
ProgramRun runProgram(const std::vector<std::string>& arguments);

// Runs the program until it has written its first line, then ends it. The output is that line
// without its end, empty when none came within half a minute or the program ended without one; the
// errors are all that it said until it was ended.
ProgramRun runToFirstLine(const std::vector<std::string>& arguments);

// The records of an output. A line that is not one JSON object, or not ended, fails the test.
std::vector<Json> recordsIn(const std::string& output);

}  // namespace callmonitor::support
