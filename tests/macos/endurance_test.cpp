// Many cycles leave nothing behind: no reference, no object, no pool.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/scheduling.h"
#include "macos/stepped_desktop.h"

// Sanitized code is many times slower; every other build runs all of them.
#ifndef MACOS_CYCLES
#define MACOS_CYCLES 10000
#endif

namespace callmonitor::macos {
namespace {

// A call that comes and goes, on a page that is made anew, beside failing and slow applications.
constexpr const char* busyDesktop = R"(
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
app ill com.microsoft.teams2
  window "Teams"
    fails AXTitle -25200
    button "Mute"
      fails AXRole -25204
front chrome
audio chrome in out
at 10s every 1m:
  replace p
    page p https://meet.google.com/abc-defg-hij
      use call
at 50s every 1m:
  fill p
    heading "You left the meeting"
at 20s every 1m:
  close preview
at 40s every 1m:
  add zoom
    window preview "Zoom"
      button "Audio"
      button "Video"
      button "Join"
end )";

struct Reading {
  long held = 0;
  long living = 0;
};

// A cycle a second.
constexpr int cycleCount = MACOS_CYCLES;
constexpr int minute = 60;

TEST(Endurance, TenThousandCyclesLeaveNothingBehind) {
  std::vector<Reading> readings;
  int cycles = 0;
  {
    ProcessState state;
    const auto lines = support::linesWrittenBy([&] {
      standins::play(written(busyDesktop + std::to_string(cycleCount + 5) + "s\n"));
      double next = standins::desktop().uptime + 6 * minute;
      desktop().afterTimer = [&] {
        ++cycles;
        expectBalance(state, 1);
        if (desktop().uptime < next) return;
        next += 6 * minute;  // always at the same point of a minute
        readings.push_back({standins::heldReferences(), standins::livingObjects()});
      };
      platform::prepareMonitoring();
      scheduleReports(state.cycleState());
      platform::runLoop();
    });
    // In each minute 60 health records, and 40 that the call goes on.
    EXPECT_GT(static_cast<int>(lines.size()), cycleCount / minute * (60 + 40));
  }
  EXPECT_GE(cycles, cycleCount);
  ASSERT_GE(readings.size(), static_cast<std::size_t>(cycleCount / (7 * minute)));
  for (const Reading& reading : readings) {
    EXPECT_EQ(reading.held, readings.front().held);
    EXPECT_EQ(reading.living, readings.front().living);
  }
  standins::reset();
  EXPECT_EQ(standins::heldReferences(), 0);
  EXPECT_EQ(standins::livingObjects(), 0);
  EXPECT_EQ(standins::openPools(), 0U);
}

}  // namespace
}  // namespace callmonitor::macos
