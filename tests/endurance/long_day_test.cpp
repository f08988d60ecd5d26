// A long day of monitoring leaves nothing behind: what is remembered stays bounded, however many
// pages, windows and lobbies come and go.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "driver/scheduling.h"
#include "endurance/live_bytes.h"
#include "platform/platform.h"
#include "platform/scenario/loader.h"
#include "platform/scripted/player.h"
#include "process_state.h"

// Sanitized code is many times slower; every other build plays the whole day.
#ifndef LONG_DAY_HOURS
#define LONG_DAY_HOURS 24
#endif

namespace callmonitor {
namespace {

// A call that is left every ten minutes and joined again ten seconds later, and whose page is made
// anew each minute; a person who opens the Zoom preview every two minutes, each time as a lobby of
// its own.
constexpr const char* day = R"(
define call
  button "Leave call"
  button "Turn off microphone"
  button "Turn off camera"
app chrome com.google.Chrome
  window w "Standup"
    page p https://meet.google.com/landing
app zoom us.zoom.xos
  window preview "Zoom"
    text "Welcome"
front zoom
audio chrome
at 10s every 1m:
  replace p
    page p https://meet.google.com/abc-defg-hij
      use call
at 5m every 10m:
  fill p
    heading "You left the meeting"
at 30s every 2m:
  fill preview
    button "Audio"
    button "Video"
    button "Join"
at 90s every 2m:
  fill preview
    text "Welcome"
end )";

struct Reading {
  std::size_t bytes = 0;
  std::size_t identifiers = 0;
  std::size_t elements = 0;
  std::size_t clients = 0;
};

// The cycles that a stream tells of: each ends with one health record.
std::size_t cyclesIn(const std::string& stream) {
  constexpr std::string_view health = R"("type":"health")";
  std::size_t count = 0;
  for (auto at = stream.find(health); at != std::string::npos; at = stream.find(health, at + 1)) {
    ++count;
  }
  return count;
}

// Keeps the stream of a day out of the test's own output, and counts its cycles.
struct StreamToNowhere {
  StreamToNowhere() { testing::internal::CaptureStdout(); }
  ~StreamToNowhere() { cycles = cyclesIn(testing::internal::GetCapturedStdout()); }
  static inline std::size_t cycles = 0;
};

// Takes a reading every hour, less some seconds so that the last one falls into the day.
void readEveryHour(const ProcessState& state, std::vector<Reading>& readings) {
  constexpr double hour = 3590;
  platform::afterDelay(hour, [&] {
    readings.push_back({endurance::liveBytes(), state.scan.registry.identifiers.size(),
                        state.scan.elements.size(), state.gates.clientEmittedAt.size()});
    readEveryHour(state, readings);
  });
}

TEST(LongDay, WhatIsRememberedStaysBounded) {
  const std::string text = day + std::to_string(LONG_DAY_HOURS) + "h\n";
  const scenario::Loaded loaded = scenario::parseScenario(
      text, [](const std::string&) { return std::optional<std::string>(); });
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  ProcessState state;
  std::vector<Reading> readings;
  readings.reserve(LONG_DAY_HOURS);
  {
    const StreamToNowhere nowhere;
    scripted::play(*loaded.scenario);
    readEveryHour(state, readings);
    scheduleReports(state.cycleState());
    platform::runLoop();
  }
  EXPECT_GE(StreamToNowhere::cycles, std::size_t{LONG_DAY_HOURS} * 3600) << "one a second";

  ASSERT_EQ(readings.size(), static_cast<std::size_t>(LONG_DAY_HOURS));
  const Reading& first = readings.front();
  // The writer may remember up to 256 clients of the last hours, of some 200 bytes each.
  constexpr std::size_t clientBytes = std::size_t{256} * 256;
  for (const Reading& reading : readings) {
    EXPECT_LE(reading.bytes, first.bytes + clientBytes);
    // Two windows, one page, and the call's own, which may be an older page.
    EXPECT_LE(reading.identifiers, 5U);
    EXPECT_LE(reading.elements, 5U);
    EXPECT_LE(reading.clients, 256U);
  }
  const auto most = std::ranges::max(readings, {}, &Reading::clients);
  if (LONG_DAY_HOURS >= 12) {
    EXPECT_GT(most.clients, 200U) << "the lobbies reached the sweep";
  }
}

}  // namespace
}  // namespace callmonitor
