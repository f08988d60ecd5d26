#include "process/program_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <string_view>

// Not every system declares its own.
extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace callmonitor::support {
namespace {

constexpr std::chrono::seconds patience{30};

// Through these a program would find a desktop of this machine.
constexpr std::array<std::string_view, 6> desktopVariables{
    "DISPLAY=",         "WAYLAND_DISPLAY=", "DBUS_SESSION_BUS_ADDRESS=",
    "XDG_RUNTIME_DIR=", "XAUTHORITY=",      "AT_SPI_BUS_ADDRESS="};

// Pointers to the texts, and a null behind, as a new process wants them.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

struct Program {
  pid_t pid = -1;
  int output = -1;  // reading ends
  int errors = -1;
};

// Two ends that no program inherits unless they are given to it. False when there are none.
bool openPipe(std::array<int, 2>& ends) {
  if (pipe(ends.data()) != 0) return false;
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  return true;
}

Program start(const std::vector<std::string>& arguments) {
  std::vector<std::string> words{CALL_MONITOR_PATH};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    if (std::ranges::none_of(desktopVariables, [&](auto name) { return text.starts_with(name); })) {
      environment.emplace_back(text);
    }
  }
  std::array<int, 2> output{};
  std::array<int, 2> errors{};
  Program program;
  if (!openPipe(output) || !openPipe(errors)) return program;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
  const int failed = posix_spawn(&program.pid, CALL_MONITOR_PATH, &actions, nullptr,
                                 pointersTo(words).data(), pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);
  close(errors[1]);
  EXPECT_EQ(failed, 0) << "cannot start " << CALL_MONITOR_PATH;
  if (failed != 0) program.pid = -1;
  program.output = output[0];
  program.errors = errors[0];
  return program;
}

// Reads both streams until `enough` holds of the output, both have ended, or patience is over.
// False in the last case.
template <class Enough>
bool readStreams(const Program& program, ProgramRun& run, Enough enough) {
  const auto end = std::chrono::steady_clock::now() + patience;
  std::array<pollfd, 2> streams{{{program.output, POLLIN, 0}, {program.errors, POLLIN, 0}}};
  while ((streams[0].fd >= 0 || streams[1].fd >= 0) && !enough(run.output)) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    if (left.count() <= 0 || poll(streams.data(), 2, static_cast<int>(left.count())) <= 0) {
      return false;
    }
    for (std::size_t i = 0; i < streams.size(); ++i) {
      if (streams[i].revents == 0) continue;
      std::array<char, 4096> bytes{};
      const ssize_t count = read(streams[i].fd, bytes.data(), bytes.size());
      if (count <= 0) {
        streams[i].fd = -1;  // poll passes over it
        continue;
      }
      (i == 0 ? run.output : run.errors).append(bytes.data(), static_cast<std::size_t>(count));
    }
  }
  return true;
}

void finish(const Program& program, ProgramRun& run) {
  close(program.output);
  close(program.errors);
  int status = 0;
  if (waitpid(program.pid, &status, 0) == program.pid && WIFEXITED(status)) {
    run.status = WEXITSTATUS(status);
  }
}

}  // namespace

ProgramRun runProgram(const std::vector<std::string>& arguments) {
  ProgramRun run;
  const Program program = start(arguments);
  if (program.pid < 0) return run;
  if (!readStreams(program, run, [](const std::string&) { return false; })) {
    ADD_FAILURE() << "the program does not end";
    kill(program.pid, SIGKILL);
  }
  finish(program, run);
  return run;
}

ProgramRun runToFirstLine(const std::vector<std::string>& arguments) {
  ProgramRun run;
  const Program program = start(arguments);
  if (program.pid < 0) return run;
  const auto line = [](const std::string& output) {
    return output.find('\n') != std::string::npos;
  };
  readStreams(program, run, line);
  kill(program.pid, SIGKILL);
  // What it said before is still in the pipes.
  readStreams(program, run, [](const std::string&) { return false; });
  finish(program, run);
  run.output = run.output.substr(0, line(run.output) ? run.output.find('\n') : 0);
  return run;
}

std::vector<Json> recordsIn(const std::string& output) {
  std::vector<Json> records;
  std::size_t start = 0;
  while (start < output.size()) {
    const std::size_t end = output.find('\n', start);
    if (end == std::string::npos) {
      ADD_FAILURE() << "an unfinished line: " << output.substr(start);
      break;
    }
    const std::string line = output.substr(start, end - start);
    records.push_back(Json::parse(line, nullptr, /*allow_exceptions=*/false));
    EXPECT_TRUE(records.back().is_object()) << "not a record: " << line;
    start = end + 1;
  }
  return records;
}

}  // namespace callmonitor::support
