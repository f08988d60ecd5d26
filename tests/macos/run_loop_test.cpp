// Timers on the main run loop, clocks and identifiers.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "macos/stepped_desktop.h"

namespace callmonitor::macos {
namespace {

struct RunLoopTest : SteppedDesktop {
  RunLoopTest() { desktop().runUntil = desktop().uptime + 100; }
};

TEST_F(RunLoopTest, ATimerRunsOnceWhenTheLoopRunsAndTheLoopEndsWithoutOne) {
  int times = 0;
  double at = 0;
  const double start = platform::systemUptime();
  platform::afterDelay(2.5, [&] {
    ++times;
    at = platform::systemUptime();
  });
  EXPECT_EQ(times, 0);
  platform::runLoop();
  EXPECT_EQ(times, 1);
  EXPECT_NEAR(at - start, 2.5, 1e-6);
  platform::runLoop();
  EXPECT_EQ(times, 1);
}

TEST_F(RunLoopTest, TimersRunInTheOrderInWhichTheyAreDue) {
  std::string order;
  platform::afterDelay(3, [&] { order += 'c'; });
  platform::afterDelay(1, [&] {
    order += 'a';
    platform::afterDelay(1, [&] { order += 'b'; });
  });
  platform::afterDelay(-1, [&] { order += '-'; });
  platform::runLoop();
  EXPECT_EQ(order, "-abc");
}

TEST_F(RunLoopTest, AnActionGoesWithItsTimer) {
  const auto token = std::make_shared<int>(0);
  long during = 0;
  platform::afterDelay(1, [token, &during] { during = token.use_count(); });
  EXPECT_EQ(token.use_count(), 2);
  EXPECT_EQ(standins::heldReferences(), 0) << "the timer is the loop's";
  platform::runLoop();
  EXPECT_EQ(during, 2) << "the action is there while it runs";
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_EQ(standins::livingObjects(), 0);
}

TEST_F(RunLoopTest, WhatTheSystemLeavesBehindBetweenActionsGoesAtOnce) {
  std::vector<long> left;
  const std::function<void()> action = [&] {
    EXPECT_EQ(standins::openPools(), 1U);
    left.push_back(standins::livingObjects());
    if (left.size() < 10) platform::afterDelay(1, action);
  };
  platform::afterDelay(1, action);
  platform::runLoop();
  EXPECT_EQ(left, std::vector<long>(10, 1)) << "the timer that is running, and nothing else";
  EXPECT_EQ(standins::livingObjects(), 0);
  EXPECT_EQ(standins::openPools(), 0U);
}

// No source ends a pass of the loop here: what goes, goes by the limit of a pass alone.
TEST_F(RunLoopTest, WhatActionsLeaveBehindGoesWithinAMinuteAlthoughNothingElseHappens) {
  constexpr double interval = 7;
  constexpr long ofAMinute = 8;  // actions so far apart that fit into one
  desktop().workspaceQuiet = true;
  desktop().runUntil = desktop().uptime + 1000;
  std::vector<long> left;
  const std::function<void()> action = [&] {
    left.push_back(standins::livingObjects() - 1);  // but for the timer that is running
    standins::keepInPool(standins::made(standins::Geometry{}));
    if (left.size() < 30) platform::afterDelay(interval, action);
  };
  platform::afterDelay(interval, action);
  platform::runLoop();
  ASSERT_EQ(left.size(), 30U);
  EXPECT_EQ(left[1], 1) << "an action alone ends no pass";
  EXPECT_LE(*std::ranges::max_element(left), ofAMinute);
  EXPECT_EQ(standins::livingObjects(), 0);
  EXPECT_EQ(standins::openPools(), 0U);
}

TEST_F(RunLoopTest, SomebodyElsesStopDoesNotEndTheLoop) {
  int times = 0;
  platform::afterDelay(1, [&] {
    ++times;
    desktop().stops = 3;
    platform::afterDelay(1, [&] { ++times; });
  });
  desktop().stops = 2;
  platform::runLoop();
  EXPECT_EQ(times, 2);
}

TEST_F(RunLoopTest, ALongTimeWithoutATimerDoesNotEndTheLoop) {
  constexpr double day = 86400;
  desktop().runUntil = desktop().uptime + 2 * day;
  const double start = platform::systemUptime();
  double at = 0;
  platform::afterDelay(day, [&] { at = platform::systemUptime(); });
  platform::runLoop();
  EXPECT_NEAR(at - start, day, 1e-6);
}

TEST_F(RunLoopTest, TheWallClockCountsFrom1970) {
  EXPECT_NEAR(platform::wallClock(), 1.75e9, 1e-6);
  standins::advance(2.5);
  EXPECT_NEAR(platform::wallClock(), 1.75e9 + 2.5, 1e-6);
}

TEST_F(RunLoopTest, IdentifiersAreUpperCaseAndDifferent) {
  const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}");
  std::set<std::string> identifiers;
  for (int i = 0; i < 20; ++i) {
    const std::string identifier = platform::randomUUID();
    EXPECT_TRUE(std::regex_match(identifier, form)) << identifier;
    identifiers.insert(identifier);
  }
  EXPECT_EQ(identifiers.size(), 20U);
  EXPECT_EQ(standins::livingObjects(), 0);
}

TEST_F(RunLoopTest, AMonitorThatCouldNotGoOnEndsWithAWordOfIt) {
  // A process that ends in any other way than this says something else last, or nothing.
  const char* noTimer = "^call-monitor: the run loop cannot set a timer\n$";
  const char* noIdentifier = "^call-monitor: the system gives no identifier\n$";
  EXPECT_EXIT(
      {
        desktop().timersFail = true;
        platform::afterDelay(1, [] {});
      },
      testing::KilledBySignal(SIGABRT), noTimer);
  EXPECT_EXIT(
      {
        desktop().identifiersFail = true;
        (void)platform::randomUUID();
      },
      testing::KilledBySignal(SIGABRT), noIdentifier);
  EXPECT_EXIT(
      {
        desktop().identifierTextsFail = true;
        (void)platform::randomUUID();
      },
      testing::KilledBySignal(SIGABRT), noIdentifier);
}

}  // namespace
}  // namespace callmonitor::macos
