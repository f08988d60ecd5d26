// Prints a few times a second which windows this desktop gives for one process, as one line of
// JSON: the result code, the titles, and how long the answer took. The argument is the process id.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

#include "platform/platform.h"

namespace {

using namespace callmonitor::platform;
using nlohmann::json;

constexpr double period = 0.25;         // seconds
constexpr double messageTimeout = 0.2;  // seconds

json titlesOf(const Reading& reading) {
  json titles = json::array();
  const auto* windows = std::get_if<std::vector<Element>>(&reading.value);
  if (reading.code != code::success || windows == nullptr) return titles;
  for (const Element& window : *windows) {
    const Reading title = readAttribute(window, "AXTitle");
    const auto* text = std::get_if<std::string>(&title.value);
    titles.push_back(text != nullptr ? *text : "");
  }
  return titles;
}

void tell(std::int32_t pid) {
  inCycle([pid] {
    const bool trusted = accessibilityTrusted();
    const bool running = runningApplication(pid).has_value();
    const Element application = applicationElement(pid, messageTimeout);
    const auto before = std::chrono::steady_clock::now();
    const Reading reading = readAttribute(application, "AXWindows");
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
    const json line{{"trusted", trusted},
                    {"running", running},
                    {"code", reading.code},
                    {"seconds", took.count()},
                    {"titles", titlesOf(reading)}};
    std::printf("%s\n", line.dump().c_str());
    std::fflush(stdout);
  });
  afterDelay(period, [pid] { tell(pid); });
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) return 2;
  const auto pid = static_cast<std::int32_t>(std::strtol(arguments[1], nullptr, 10));
  prepareMonitoring();
  afterDelay(0, [pid] { tell(pid); });
  runLoop();
}
