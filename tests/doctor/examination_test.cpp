// What a look at a desktop finds, what it asks, and how long it waits for the sound.
#include "doctor/examination.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "support/desktop_builder.h"

namespace callmonitor::doctor {
namespace {

using namespace support;
namespace code = platform::code;

constexpr const char* chrome = "com.google.Chrome";
constexpr const char* zoomClient = "us.zoom.xos";

struct Examination : testing::Test {
  Examination() { scripted::reset(); }

  // The windows of the only application.
  static WindowsFinding windowsFound() {
    const Findings findings = examine();
    EXPECT_EQ(findings.applications.size(), 1U);
    return findings.applications.at(0).windows.value();
  }
};

TEST_F(Examination, TellsTheDesktopAsItIs) {
  start(42, chrome);
  desktop().applications.push_back({43, std::nullopt, std::nullopt, false});
  desktop().front = 42;
  desktop().uptime = 77.5;
  desktop().wallClock = 1.75e9;
  desktop().windows = {{42, "Meet", 0, 7}};
  desktop().audio = {{"com.google.Chrome.helper", true, false}};
  const Findings findings = examine();
  EXPECT_TRUE(findings.trusted);
  EXPECT_EQ(findings.uptime, 77.5);
  EXPECT_EQ(findings.wallClock, 1.75e9);
  EXPECT_EQ(findings.front.value().pid, 42);
  EXPECT_EQ(findings.onScreen.value().size(), 1U);
  EXPECT_EQ(findings.audio.value().size(), 1U);
  ASSERT_EQ(findings.applications.size(), 2U);
  EXPECT_EQ(findings.applications[0].kind, "browser");
  EXPECT_TRUE(findings.applications[0].audio.value().input);
  EXPECT_FALSE(findings.applications[0].audio.value().output);
  EXPECT_EQ(findings.applications[1].application.pid, 43);
  EXPECT_FALSE(findings.applications[1].audio.has_value());
  EXPECT_FALSE(findings.applications[1].windows.has_value()) << "a helper is not opened";
}

TEST_F(Examination, WhatTheDesktopDoesNotKnowIsAbsent) {
  desktop().trusted = false;
  const Findings findings = examine();
  EXPECT_FALSE(findings.trusted);
  EXPECT_FALSE(findings.front.has_value());
  EXPECT_FALSE(findings.onScreen.has_value());
  EXPECT_FALSE(findings.audio.has_value());
  EXPECT_TRUE(findings.applications.empty());
}

TEST_F(Examination, NothingIsEverSet) {
  start(42, chrome, {window("w", "Meet", {page("p", meetAddress, callControls())})});
  start(43, zoomClient, {window("z", "Zoom Meeting")});
  visit([](const Findings&) {});
  desktop().runUntil = desktop().uptime + 10;
  platform::runLoop();
  EXPECT_EQ(timesCalled("prepareLooking"), 1U);
  EXPECT_EQ(timesCalled("prepareMonitoring"), 0U);
  EXPECT_EQ(timesCalled("read w AXTitle"), 1U);
  EXPECT_EQ(timesCalled("read z AXTitle"), 1U);
  EXPECT_TRUE(callsAfter("set ").empty());
}

TEST_F(Examination, WithoutTrustNoApplicationIsOpened) {
  start(42, chrome, {window("w", "Meet")});
  desktop().trusted = false;
  const Findings findings = examine();
  ASSERT_EQ(findings.applications.size(), 1U);
  EXPECT_FALSE(findings.applications[0].windows.has_value());
  EXPECT_TRUE(callsAfter("open ").empty());
  EXPECT_TRUE(callsAfter("read ").empty());
}

TEST_F(Examination, AFailedReadIsTheCodeBesideNoTitle) {
  struct Row {
    const char* sentence;
    scripted::Answer title;
    std::int32_t code;
    std::optional<std::string> found;
  };
  const std::vector<Row> rows{
      {"a title", scripted::textAnswer("Meet"), code::success, "Meet"},
      {"an empty title", scripted::textAnswer(""), code::success, ""},
      {"no value", scripted::codeAnswer(code::noValue), code::noValue, std::nullopt},
      {"a window that has gone", scripted::codeAnswer(code::invalidElement), code::invalidElement,
       std::nullopt},
      {"an answer that comes too late",
       {{code::success, std::string("Meet")}, 0.3},
       code::cannotComplete,
       std::nullopt},
      {"success with nothing", {{code::success, {}}, 0}, code::success, std::nullopt},
      {"a value that is no text", scripted::flagAnswer(true), code::success, std::nullopt},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    scripted::reset();
    start(42, zoomClient, {with(node("w", "AXWindow"), "AXTitle", row.title)});
    const WindowsFinding windows = windowsFound();
    ASSERT_EQ(windows.looked.size(), 1U);
    EXPECT_EQ(windows.looked[0].code, row.code);
    EXPECT_EQ(windows.looked[0].title, row.found);
  }
}

TEST_F(Examination, AListOfWindowsThatCannotBeReadIsNotAnEmptyOne) {
  struct Row {
    const char* sentence;
    scripted::Answer windows;
    std::int32_t code;
    std::optional<std::size_t> count;
  };
  const std::vector<Row> rows{
      {"no windows", scripted::elementsAnswer({}), code::success, 0},
      {"an application that hangs", scripted::codeAnswer(code::cannotComplete),
       code::cannotComplete, std::nullopt},
      {"a value that is no list", scripted::textAnswer("w"), code::success, std::nullopt},
      {"success with nothing", {{code::success, {}}, 0}, code::success, std::nullopt},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    scripted::reset();
    start(42, zoomClient);
    desktop().elements[scripted::applicationKey(42)].insert_or_assign("AXWindows", row.windows);
    const WindowsFinding windows = windowsFound();
    EXPECT_EQ(windows.code, row.code);
    EXPECT_EQ(windows.count, row.count);
    EXPECT_TRUE(windows.looked.empty());
    EXPECT_EQ(windows.times.seconds.size(), 1U);
  }
}

TEST_F(Examination, EveryReadIsTimedByItself) {
  start(42, zoomClient, {window("w", "Zoom Meeting")});
  desktop().elements["w"]["AXTitle"].delay = 0.125;
  desktop().elements["w"]["AXChildren"].delay = 0.0625;
  const WindowsFinding windows = windowsFound();
  // The list, and of the window its title and children.
  EXPECT_EQ(windows.times.seconds, (std::vector{0.0, 0.125, 0.0625}));
  EXPECT_EQ(callsAfter("read ").size(), 3U) << "nothing is asked that is not timed";
  EXPECT_EQ(median(windows.times), 0.0625);
  EXPECT_EQ(longest(windows.times), 0.125);
}

TEST_F(Examination, TheMedianIsTheMiddleOfTheTimes) {
  struct Row {
    std::vector<double> seconds;
    std::optional<double> median;
    std::optional<double> longest;
  };
  for (const Row& row : std::vector<Row>{{{}, std::nullopt, std::nullopt},
                                         {{0.5}, 0.5, 0.5},
                                         {{0.5, 0.25}, 0.375, 0.5},
                                         {{1.0, 0.25, 0.5}, 0.5, 1.0}}) {
    EXPECT_EQ(median({row.seconds}), row.median);
    EXPECT_EQ(longest({row.seconds}), row.longest);
  }
}

TEST_F(Examination, WindowsPastTheLimitAreCountedAndNotLookedAt) {
  std::vector<Node> windows;
  for (std::size_t i = 0; i < windowLimit + 3; ++i) {
    windows.push_back(window("w" + std::to_string(i), "Document"));
  }
  start(42, zoomClient, windows);
  const WindowsFinding found = windowsFound();
  EXPECT_EQ(found.count, windowLimit + 3);
  EXPECT_EQ(found.looked.size(), windowLimit);
}

TEST_F(Examination, AnApplicationThatHangsTakesNoMoreThanItsTime) {
  std::vector<Node> windows;
  windows.reserve(40);
  for (int i = 0; i < 40; ++i) windows.push_back(window("w" + std::to_string(i), "Document"));
  start(42, zoomClient, windows);
  for (const Node& hung : windows) {
    for (const char* name : {"AXTitle", "AXChildren"}) {
      desktop().elements[hung.key][name].delay = 1.0;
    }
  }
  const double before = desktop().uptime;
  const WindowsFinding found = windowsFound();
  // The last window that is begun in time has two reads, each as long as a message may take.
  EXPECT_LE(desktop().uptime - before, applicationBudget + 2 * 0.2 + 1e-9);
  EXPECT_EQ(found.count, 40U);
  EXPECT_FALSE(found.looked.empty());
  EXPECT_LT(found.looked.size(), 40U);
}

TEST_F(Examination, TheSoundIsWaitedForUpToASecond) {
  struct Row {
    const char* sentence;
    std::optional<double> heardAfter;  // seconds
    double atLeast;
    double atMost;
  };
  for (const Row& row : std::vector<Row>{{"known at once", 0.0, 0, 0},
                                         {"known soon", 0.35, 0.35, 0.35 + audioPeriod},
                                         {"never known", std::nullopt, 1.0, 1.0 + audioPeriod}}) {
    SCOPED_TRACE(row.sentence);
    scripted::reset();
    const double before = desktop().uptime;
    desktop().runUntil = before + 60;
    if (row.heardAfter) {
      desktop().nextChange = before + *row.heardAfter;
      desktop().change = [] {
        desktop().audio.emplace();
        desktop().nextChange = std::numeric_limits<double>::infinity();
      };
    }
    std::vector<Findings> told;
    visit([&told](const Findings& findings) { told.push_back(findings); });
    EXPECT_TRUE(told.empty()) << "nothing is told before the run loop runs";
    platform::runLoop();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].audio.has_value(), row.heardAfter.has_value());
    EXPECT_GE(told[0].uptime - before, row.atLeast - 1e-9);
    EXPECT_LE(told[0].uptime - before, row.atMost + 1e-9);
  }
}

}  // namespace
}  // namespace callmonitor::doctor
