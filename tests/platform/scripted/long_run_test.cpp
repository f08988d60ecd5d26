// Long scenarios run through the real monitoring loop in moments, and leave nothing behind.
#include <gtest/gtest.h>

#include <set>

#include "driver/scheduling.h"
#include "platform/scenario/loader.h"
#include "platform/scripted/desktop.h"
#include "platform/scripted/player.h"
#include "process_state.h"
#include "support/emitted_records.h"

namespace callmonitor {
namespace {

using support::Json;

// Every ten minutes a call of five minutes, on a page that is made anew each time.
constexpr const char* hourOfCalls = R"(
define call
  button "Leave call"
  button "Turn on microphone"
app chrome com.google.Chrome
  window w "Standup"
    page p https://meet.google.com/landing
at 0s every 10m:
  replace p
    page p https://meet.google.com/abc-defg-hij
      use call
at 5m every 10m:
  set p url=https://meet.google.com/landing
  fill p
    heading "You left the meeting"
end 1h
)";

TEST(LongRun, AnHourOfCallsIsPlayedAndTold) {
  const scenario::Loaded loaded = scenario::parseScenario(
      hourOfCalls, [](const std::string&) { return std::optional<std::string>(); });
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  ProcessState state;
  const std::vector<Json> records = support::recordsWrittenBy([&] {
    scripted::play(*loaded.scenario);
    platform::prepareMonitoring();
    scheduleReports(state.cycleState());
    platform::runLoop();
  });

  EXPECT_EQ(support::ofKind(records, "health").size(), 3600U) << "a cycle a second";
  std::set<std::string> sessions;
  std::size_t left = 0;
  std::size_t joined = 0;
  for (const Json& record : support::ofKind(records, "observation")) {
    sessions.insert(record["sessionId"]);
    left += record["state"] == "left" ? 1U : 0U;
    joined += record["state"] == "joined" ? 1U : 0U;
  }
  EXPECT_EQ(sessions.size(), 6U);
  EXPECT_EQ(left, 6U);
  EXPECT_EQ(joined, 6U * 300) << "each from its minute 0 to the cycle before its minute 5";

  const scripted::Desktop& desktop = scripted::desktop();
  EXPECT_TRUE(desktop.calls.empty());
  EXPECT_EQ(desktop.timers.size(), 1U);
  EXPECT_EQ(desktop.elements.size(), 4U) << "the application, the window, the page, its heading";
  EXPECT_TRUE(state.tracker.calls.empty());
}

}  // namespace
}  // namespace callmonitor
