// Prints four times a second what this desktop's sound system says, as one line of JSON: "absent",
// or the list of what runs. A line tells how long the answer took and how many threads the program
// has.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "platform/platform.h"

namespace {

using namespace callmonitor::platform;
using nlohmann::json;

constexpr double period = 0.25;  // seconds

json listed(const std::optional<std::vector<AudioProcess>>& processes) {
  if (!processes) return "absent";
  json list = json::array();
  for (const AudioProcess& each : *processes) {
    list.push_back({{"bundle", each.bundle}, {"input", each.input}, {"output", each.output}});
  }
  return list;
}

bool pipeSignalEndsTheProgram() {
  struct sigaction action {};
  return sigaction(SIGPIPE, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

void tell() {
  std::optional<std::vector<AudioProcess>> processes;
  const auto before = std::chrono::steady_clock::now();
  inCycle([&] { processes = audioProcesses(); });
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
  const auto threads = std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                                     std::filesystem::directory_iterator());
  const json line{{"heard", listed(processes)},
                  {"seconds", took.count()},
                  {"threads", threads},
                  {"pipeSignalEnds", pipeSignalEndsTheProgram()}};
  std::printf("%s\n", line.dump().c_str());
  std::fflush(stdout);
  afterDelay(period, tell);
}

}  // namespace

int main() {
  prepareMonitoring();
  afterDelay(0, tell);
  runLoop();
}
