// What a look at a desktop found: facts as they were read, and nothing judged but what kind of
// application each one is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "identity/process_audio.h"
#include "platform/platform.h"

namespace callmonitor::doctor {

// How long reads took, each for itself, in seconds: of a list of windows, and of each window's
// title and children.
struct ReadTimes {
  std::vector<double> seconds;  // in the order of the reads
};

// The middle of the times, the mean of the two in the middle of an even number; absent for none.
[[nodiscard]] std::optional<double> median(const ReadTimes& times);
// Absent for none.
[[nodiscard]] std::optional<double> longest(const ReadTimes& times);

struct WindowFinding {
  std::int32_t code = platform::code::success;  // of the read of its title
  // Absent where the read failed, gave nothing, or gave what is not a text.
  std::optional<std::string> title;
};

// An application's windows. They are opened only where the monitor could ever open them.
struct WindowsFinding {
  std::int32_t code = platform::code::success;  // of the read of the list
  // Absent where the read failed or gave what is not a list of elements.
  std::optional<std::size_t> count;
  // The first of them, in the application's order; fewer than `count` where there were too many or
  // time was up.
  std::vector<WindowFinding> looked;
  ReadTimes times;
};

struct ApplicationFinding {
  platform::Application application;
  std::string kind;  // in words
  // Absent where it is not known, which is not silence.
  std::optional<ClientAudio> audio;
  // Absent where nobody looked: without trust, or where the monitor never would.
  std::optional<WindowsFinding> windows;
};

struct Findings {
  bool trusted = false;
  double uptime = 0;     // seconds since boot
  double wallClock = 0;  // seconds since 1970
  std::optional<platform::Application> front;
  std::optional<std::vector<platform::OnScreenWindow>> onScreen;
  std::optional<std::vector<platform::AudioProcess>> audio;
  std::vector<ApplicationFinding> applications;  // in the desktop's own order
};

}  // namespace callmonitor::doctor
