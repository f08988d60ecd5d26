// Plays a scenario through the real monitoring loop and writes the stream that the monitor would
// have written on such a desktop.
#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "driver/scheduling.h"
#include "platform/platform.h"
#include "platform/scenario/loader.h"
#include "platform/scripted/desktop.h"
#include "platform/scripted/player.h"
#include "process_state.h"

namespace {

// Exit statuses, as sysexits.h has them.
constexpr int wrongUsage = 64;
constexpr int wrongScenario = 65;

struct Arguments {
  std::string scenario;
  bool realTime = false;
  bool valid = true;
};

Arguments argumentsOf(const std::vector<std::string>& words) {
  Arguments arguments;
  for (const std::string& word : words) {
    if (word == "--real-time") {
      arguments.realTime = true;
    } else if (arguments.scenario.empty() && !word.starts_with("--")) {
      arguments.scenario = word;
    } else {
      arguments.valid = false;
    }
  }
  arguments.valid = arguments.valid && !arguments.scenario.empty();
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  namespace cm = callmonitor;
  const Arguments arguments = argumentsOf(std::vector<std::string>(argv + 1, argv + argc));
  if (!arguments.valid) {
    std::cerr << "usage: call-monitor-replay SCENARIO [--real-time]\n";
    return wrongUsage;
  }
  const cm::scenario::Loaded loaded = cm::scenario::loadScenario(arguments.scenario);
  if (!loaded.scenario) {
    std::cerr << arguments.scenario << ": " << loaded.error << '\n';
    return wrongScenario;
  }
  cm::scripted::play(*loaded.scenario);
  if (arguments.realTime) {
    cm::scripted::desktop().pace = [](double seconds) {
      std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    };
  }
  cm::ProcessState state;
  cm::platform::prepareMonitoring();
  cm::scheduleReports(state.cycleState());
  cm::platform::runLoop();
  return 0;
}
