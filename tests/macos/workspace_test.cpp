// Applications, clocks and pools: what comes from the system's objects.
#include "platform/macos/workspace.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "macos/stepped_desktop.h"

namespace callmonitor::macos {
namespace {

using platform::Application;

struct Workspace : SteppedDesktop {
  // What `action` gives within a cycle.
  template <class Action>
  static auto inCycle(Action action) {
    decltype(action()) result{};
    const std::size_t pools = standins::openPools();
    platform::inCycle([&] { result = action(); });
    EXPECT_EQ(standins::heldReferences(), 0);
    EXPECT_EQ(standins::openPools(), pools);
    return result;
  }
};

// An application in words: "7 org.example 12.5 regular".
std::string told(const std::optional<Application>& application) {
  if (!application) return "none";
  std::string words = std::to_string(application->pid) + " ";
  words +=
      application->bundleIdentifier ? "\"" + *application->bundleIdentifier + "\"" : "no bundle";
  words += application->launchedAt ? " " + std::to_string(*application->launchedAt) : " no launch";
  return words + (application->regular ? " regular" : " not regular");
}

std::vector<std::string> told(const std::vector<Application>& applications) {
  std::vector<std::string> words;
  words.reserve(applications.size());
  for (const Application& application : applications) words.push_back(told(application));
  return words;
}

TEST_F(Workspace, WhatAnApplicationDoesNotHaveIsAbsent) {
  struct Row {
    const char* sentence;
    Application running;
    const char* told;
  };
  for (const Row& row : std::vector<Row>{
           {"everything",
            {7, 1.75e9 + 0.125, "org.example", true},
            "7 \"org.example\" 1750000000.125000 regular"},
           {"no launch date", {7, {}, "org.example", true}, "7 \"org.example\" no launch regular"},
           {"a launch date of 1970",
            {7, 0.0, "org.example", true},
            "7 \"org.example\" 0.000000 regular"},
           {"no bundle identifier", {7, 12.5, {}, true}, "7 no bundle 12.500000 regular"},
           {"an empty bundle identifier", {7, 12.5, "", true}, "7 \"\" 12.500000 regular"},
           {"an accessory",
            {7, 12.5, "org.example", false},
            "7 \"org.example\" 12.500000 not regular"},
           {"no process", {-1, 12.5, "org.example", true}, "none"},
           {"process 0", {0, {}, {}, false}, "0 no bundle no launch not regular"},
       }) {
    desktop().applications = {row.running};
    desktop().front = row.running;
    EXPECT_EQ(told(inCycle(platform::frontmostApplication)), row.told) << row.sentence;
    EXPECT_EQ(told(inCycle([&] { return platform::runningApplication(row.running.pid); })),
              row.told)
        << row.sentence;
    const auto all = told(inCycle(platform::runningApplications));
    if (row.running.pid < 0) {
      EXPECT_TRUE(all.empty()) << row.sentence;
    } else {
      EXPECT_EQ(all, std::vector<std::string>{row.told}) << row.sentence;
    }
  }
}

TEST_F(Workspace, OnlyARegularApplicationIsRegular) {
  struct Row {
    const char* sentence;
    long policy;
    bool regular;
  };
  for (const Row& row :
       std::vector<Row>{{"regular", 0, true}, {"accessory", 1, false}, {"prohibited", 2, false}}) {
    desktop().activationPolicy = row.policy;
    desktop().applications = {{7, 12.5, "org.example", true}};
    desktop().front = desktop().applications.front();
    EXPECT_EQ(inCycle([] { return platform::runningApplication(7); })->regular, row.regular)
        << row.sentence;
    EXPECT_EQ(inCycle(platform::frontmostApplication)->regular, row.regular) << row.sentence;
    EXPECT_EQ(inCycle(platform::runningApplications).at(0).regular, row.regular) << row.sentence;
  }
}

TEST_F(Workspace, ALaunchTimeIsTheSameDoubleAtEveryReading) {
  const double launched = 1750000000.1234567;
  desktop().applications = {{7, launched, "org.example", true}};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(inCycle([] { return platform::runningApplication(7); })->launchedAt, launched);
  }
}

TEST_F(Workspace, ApplicationsComeInItsOrderAndOnceEach) {
  const auto pids = [](const std::vector<std::int32_t>& listed) {
    desktop().applications.clear();
    for (const std::int32_t pid : listed) desktop().applications.push_back({pid, {}, {}, true});
    std::vector<std::int32_t> told;
    for (const auto& application : inCycle(platform::runningApplications)) {
      told.push_back(application.pid);
    }
    return told;
  };
  using Pids = std::vector<std::int32_t>;
  EXPECT_EQ(pids({}), Pids{});
  EXPECT_EQ(pids({9, 3, 5}), (Pids{9, 3, 5}));
  EXPECT_EQ(pids({9, 3, 9}), (Pids{9, 3}));
  EXPECT_EQ(pids({-1, 9, -1, 3}), (Pids{9, 3}));
}

TEST_F(Workspace, WhoIsNotThereIsAbsent) {
  EXPECT_FALSE(inCycle(platform::frontmostApplication));
  EXPECT_FALSE(inCycle([] { return platform::runningApplication(7); }));
}

TEST_F(Workspace, ItLearnsOfApplicationsOnlyWhileTheRunLoopRuns) {
  play("at 1s:\n  app late org.example.Late\nend 10s\n");
  standins::advance(5);
  EXPECT_TRUE(inCycle(platform::runningApplications).empty()) << "nothing has run the loop";
  std::size_t listed = 0;
  platform::afterDelay(1, [&] { listed = inCycle(platform::runningApplications).size(); });
  platform::runLoop();
  EXPECT_EQ(listed, 1U);
}

TEST_F(Workspace, UptimeIsTheProcessInformationsInACycleAndOutsideOfOne) {
  desktop().uptime = 1234.5678;
  EXPECT_EQ(platform::systemUptime(), 1234.5678);
  EXPECT_EQ(inCycle(platform::systemUptime), 1234.5678);
  EXPECT_EQ(standins::openPools(), 0U);
}

TEST_F(Workspace, SystemVersionsAreComparedPartByPart) {
  struct Row {
    long major;
    long minor;
    bool atLeast;  // 14.2
  };
  for (const Row& row : std::vector<Row>{{14, 2, true},
                                         {14, 10, true},
                                         {15, 0, true},
                                         {26, 1, true},
                                         {14, 1, false},
                                         {14, 0, false},
                                         {13, 9, false},
                                         {10, 15, false}}) {
    desktop().majorVersion = row.major;
    desktop().minorVersion = row.minor;
    EXPECT_EQ(inCycle([] { return platform::systemIsAtLeast(14, 2); }), row.atLeast)
        << row.major << "." << row.minor;
  }
}

TEST_F(Workspace, ACycleEndsItsPool) {
  platform::inCycle([] { EXPECT_EQ(standins::openPools(), 1U); });
  EXPECT_EQ(standins::openPools(), 0U);
}

}  // namespace
}  // namespace callmonitor::macos
