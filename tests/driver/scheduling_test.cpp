// How cycles follow one another on the run loop.
#include "driver/scheduling.h"

#include <gtest/gtest.h>

#include "process_state.h"
#include "support/desktop_builder.h"
#include "support/emitted_records.h"

namespace callmonitor {
namespace {

using namespace support;

struct Scheduling : testing::Test {
  ProcessState state;
  std::vector<double> starts;  // uptime at which each cycle began

  Scheduling() {
    scripted::reset();
    when("cycle begins", [this] {
      starts.push_back(desktop().uptime);
      EXPECT_TRUE(desktop().timers.empty()) << "no timer waits while a cycle runs";
    });
  }
  // Schedules, and runs what is due before this uptime.
  std::vector<Json> runUntil(double uptime) {
    desktop().runUntil = uptime;
    return recordsWrittenBy([&] {
      scheduleReports(state.cycleState());
      platform::runLoop();
    });
  }
  void expectStarts(const std::vector<double>& expected) {
    ASSERT_EQ(starts.size(), expected.size());
    for (std::size_t i = 0; i < starts.size(); ++i) EXPECT_NEAR(starts[i], expected[i], 1e-6);
  }
};

TEST_F(Scheduling, TheFirstCycleRunsAtOnceAndArmsOneTimer) {
  const auto records = recordsWrittenBy([&] { scheduleReports(state.cycleState()); });
  EXPECT_EQ(ofKind(records, "health").size(), 1U);
  expectStarts({1000});
  ASSERT_EQ(desktop().timers.size(), 1U);
  EXPECT_DOUBLE_EQ(desktop().timers[0].due, 1001);
}

TEST_F(Scheduling, AnIdleDesktopIsLookedAtOnceASecond) {
  const auto records = runUntil(1003.5);
  expectStarts({1000, 1001, 1002, 1003});
  EXPECT_EQ(ofKind(records, "health").size(), 4U);
  EXPECT_EQ(desktop().timers.size(), 1U) << "there is never more than one pending timer";
}

TEST_F(Scheduling, EveryCycleIsBracketedAndNoneOverlapsAnother) {
  runUntil(1002.5);
  std::vector<std::string> brackets;
  for (const std::string& call : desktop().calls) {
    if (call.starts_with("cycle ")) brackets.push_back(call);
  }
  EXPECT_EQ(brackets, (std::vector<std::string>{"cycle begins", "cycle ends", "cycle begins",
                                                "cycle ends", "cycle begins", "cycle ends"}));
}

TEST_F(Scheduling, ThePeriodIsMeasuredFromStartToStart) {
  when("applications", [] { desktop().uptime += 0.3; });
  runUntil(1003.5);
  expectStarts({1000, 1001, 1002, 1003});
}

TEST_F(Scheduling, ASlowCycleIsFollowedAfterATenthOfASecond) {
  when("applications", [] { desktop().uptime += 1.5; });
  runUntil(1004);
  expectStarts({1000, 1001.6, 1003.2});
}

TEST_F(Scheduling, ACycleThatLeavesLessThanATenthOfASecondIsFollowedAfterThat) {
  when("applications", [] { desktop().uptime += 0.95; });
  runUntil(1002.5);
  expectStarts({1000, 1001.05, 1002.1});
}

TEST_F(Scheduling, AMeetingPageInFrontIsLookedAtTwiceASecondForThirtySeconds) {
  start(7, "com.google.Chrome", {window("w", "Meet", {page("p", meetAddress, lobbyControls())})});
  desktop().front = 7;
  runUntil(1034.9);
  ASSERT_EQ(starts.size(), 65U);  // 60 fast periods, then one a second
  for (std::size_t i = 0; i <= 60; ++i) {
    EXPECT_NEAR(starts[i], 1000 + 0.5 * static_cast<double>(i), 1e-6);
  }
  for (std::size_t i = 61; i < 65; ++i) {
    EXPECT_NEAR(starts[i], 1030 + static_cast<double>(i - 60), 1e-6);
  }
}

}  // namespace
}  // namespace callmonitor
