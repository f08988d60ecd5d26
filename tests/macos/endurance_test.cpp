// Many cycles leave nothing behind: no reference, no object, no pool.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/scheduling.h"
#include "macos/stepped_desktop.h"

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

TEST(Endurance, TenThousandCyclesLeaveNothingBehind) {
  constexpr double hour = 3600;
  std::vector<Reading> readings;
  std::size_t cycles = 0;
  {
    ProcessState state;
    const auto lines = support::linesWrittenBy([&] {
      standins::play(written(busyDesktop + std::string("10005s\n")));
      double next = standins::desktop().uptime + hour / 10;
      desktop().afterTimer = [&] {
        ++cycles;
        expectBalance(state);
        if (desktop().uptime < next) return;
        next += hour / 10;  // always at the same point of a minute
        readings.push_back({standins::heldReferences(), standins::livingObjects()});
      };
      platform::prepareMonitoring();
      scheduleReports(state.cycleState());
      platform::runLoop();
    });
    // In each of the minutes 60 health records, and 40 that the call goes on.
    EXPECT_GT(lines.size(), 166U * (60 + 40));
  }
  EXPECT_GE(cycles, 10000U);
  ASSERT_GE(readings.size(), 25U);
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
