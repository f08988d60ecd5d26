// The replay executable as a process.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace callmonitor::scenarios {

struct Replayed {
  std::string output;  // standard output and standard error
  int status = -1;     // of its exit; -1 where it did not start or was ended by a signal
};

// Runs it to its end. The arguments are words of a shell.
inline Replayed replay(const std::string& arguments) {
  Replayed result;
  const std::string command = std::string("'") + REPLAY_EXECUTABLE + "' " + arguments + " 2>&1";
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return result;
  std::array<char, 4096> buffer{};
  for (std::size_t read = 0; (read = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    result.output.append(buffer.data(), read);
  }
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  return result;
}

}  // namespace callmonitor::scenarios
