// One observation cycle: which applications it looks at, in which order, and what it writes.
#include "driver/report_cycle.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/cycle.h"

namespace callmonitor {
namespace {

using namespace support;

struct ReportCycle : CycleTest {};

constexpr const char* chrome = "com.google.Chrome";
constexpr const char* genericBundle = "org.example.CustomCalls";

std::vector<Node> meetWindow(const std::vector<Node>& shown = callControls()) {
  return {window("w", "Standup", {page("p", meetAddress, shown)})};
}

// What it writes.

TEST_F(ReportCycle, EveryCycleEndsWithExactlyOneHealthRecord) {
  start(7, chrome, meetWindow());
  start(42, "us.zoom.xos", {window("z", "Zoom Meeting", callControls())});
  for (const bool trusted : {true, false, true}) {
    desktop().trusted = trusted;
    const std::vector<Json> records = cycle();
    ASSERT_EQ(ofKind(records, "health").size(), 1U);
    EXPECT_EQ(kindOf(records.back()), "health");
    EXPECT_EQ(records.back()["trusted"], trusted);
  }
}

TEST_F(ReportCycle, ObservationsComeBeforeEverythingElseInTheOrderInWhichTheyWereMade) {
  start(7, chrome, meetWindow());
  start(42, "us.zoom.xos", {window("z", "Zoom Meeting", callControls())});
  const std::vector<Json> first = cycle();
  ASSERT_GE(first.size(), 3U);
  EXPECT_EQ(first[0]["callKey"], meetKey);
  EXPECT_EQ(first[1]["provider"], "zoom");
  quit(42);
  const std::vector<Json> second = cycle();
  ASSERT_GE(second.size(), 3U);
  EXPECT_EQ(second[0]["state"], "left") << "vanished processes first";
  EXPECT_EQ(second[0]["provider"], "zoom");
  EXPECT_EQ(second[1]["callKey"], meetKey);
  for (std::size_t i = 2; i < second.size(); ++i) EXPECT_NE(kindOf(second[i]), "observation");
}

TEST_F(ReportCycle, CallsAreToldInTheOrderInWhichTheirApplicationsWereExamined) {
  start(1, chrome, {window("w1", "", {page("p1", "https://zoom.us/j/123456789", callControls())})});
  start(2, "com.microsoft.edgemac", {window("w2", "", {page("p2", meetAddress, callControls())})});
  const auto providers = [&] {
    Words told;
    for (const Json& record : ofKind(cycle(), "observation")) told.push_back(record["provider"]);
    return told;
  };
  EXPECT_EQ(providers(), (Words{"zoom", "meet"}));
  EXPECT_EQ(providers(), (Words{"meet", "zoom"})) << "the second is examined first now";
}

TEST_F(ReportCycle, ItsStepsComeInOrder) {
  start(7, chrome, meetWindow());
  desktop().windows.emplace();
  state.clients.lobbyRoots = {{7, {scripted::element("lobby"), "zoom:lobby-1"}}};
  (void)cycle();
  const std::vector<std::string> steps{"trusted",
                                       "application 7",
                                       "audio",
                                       "applications",
                                       "frontmost",
                                       "open 7",
                                       "set app:7 AXEnhancedUserInterface true",
                                       "read app:7 AXWindows",
                                       "read w AXHidden",
                                       "read p AXURL",
                                       "scan p",
                                       "windows"};
  for (std::size_t i = 1; i < steps.size(); ++i) {
    EXPECT_LT(placeOf(steps[i - 1]), placeOf(steps[i])) << steps[i];
  }
  EXPECT_LT(placeOf(steps.back()), desktop().calls.size());
}

TEST_F(ReportCycle, ARecordThatJsonCannotHoldIsSkippedAndTheCycleGoesOn) {
  const std::string bundle = "org.example.\xff";
  start(42, bundle, {window("w", "Call", callControls())});
  desktop().audio = {{bundle, true, true}};
  const std::vector<Json> records = cycle();
  EXPECT_TRUE(ofKind(records, "observation").empty());
  EXPECT_EQ(ofKind(records, "health").size(), 1U);
  EXPECT_EQ(state.tracker.calls.size(), 1U);
}

TEST_F(ReportCycle, AJoinedCallNamesItsApplicationAndItsWindowOnTheScreen) {
  start(7, chrome, meetWindow(callControls(/*mediaOn=*/true)));
  desktop().windows = {{7, "Standup", 0, 1234}};
  const auto records = ofKind(cycle(), "observation");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["state"], "joined");
  EXPECT_EQ(records[0]["provider"], "meet");
  EXPECT_EQ(records[0]["callKey"], meetKey);
  EXPECT_EQ(records[0]["title"], "Standup");
  EXPECT_EQ(records[0]["mediaActive"], true);
  EXPECT_EQ(records[0]["applicationBundleId"], chrome);
  EXPECT_EQ(records[0]["screenWindowId"], 1234);
}

TEST_F(ReportCycle, AnObservationNamesTheApplicationThatRunsAsTheSameLaunchNow) {
  struct Row {
    const char* sentence;
    std::function<void()> change;
    bool named;
  };
  for (const Row& row : std::vector<Row>{
           {"the same launch", [] {}, true},
           {"another launch", [] { relaunch(42, 2.0); }, false},
           {"an unknown launch", [] { desktop().applications[0].launchedAt.reset(); }, false},
           {"no identifier", [] { desktop().applications[0].bundleIdentifier.reset(); }, false},
           {"an identifier of 256 characters",
            [] { desktop().applications[0].bundleIdentifier = std::string(256, 'x'); }, false},
           {"a process that has quit", [] { quit(42); }, false},
       }) {
    SCOPED_TRACE(row.sentence);
    scripted::reset();
    state = {};
    start(42, "us.zoom.xos", {window("w", "Zoom", callControls())});
    (void)cycle();
    call().applicationBundleID.reset();  // as if the process had not been known when it opened
    bool changed = false;
    when("application 42", [&] {
      if (changed || timesCalled("open 42") == 0) return;
      changed = true;
      row.change();
    });
    const auto records = ofKind(cycle(), "observation");
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].contains("applicationBundleId"), row.named);
  }
}

// Candidates.

TEST_F(ReportCycle, OnlyApplicationsThatCouldHoldAMeetingAreOpened) {
  struct Row {
    const char* sentence;
    const char* bundle;
    bool candidate;
  };
  const std::string profileApp = "com.google.Chrome.app.Profile-2-kjgfgldnnfoeklkmfkjfagphfepbbdan";
  for (const Row& row : std::vector<Row>{
           {"Zoom", "us.zoom.xos", true},
           {"Teams", "com.microsoft.teams2", true},
           {"old Teams", "com.microsoft.teams", true},
           {"Webex", "com.cisco.webexmeetingsapp", true},
           {"Chrome", chrome, true},
           {"Edge", "com.microsoft.edgemac", true},
           {"Safari", "com.apple.Safari", true},
           {"a web app", webApp, true},
           {"a web app of a profile", profileApp.c_str(), true},
           {"a web app of Edge", "com.microsoft.edgemac.app.kjgfgldnnfoeklkmfkjfagphfepbbdan",
            true},
           {"something like a web app", "com.google.Chrome.app.invalid", false},
           {"an editor", "org.example.Editor", false},
           {"an identifier in another case", "US.zoom.xos", false},
           {"no identifier", "", false},
       }) {
    SCOPED_TRACE(row.sentence);
    scripted::reset();
    start(42, row.bundle);
    EXPECT_EQ(opened(), row.candidate ? Words{"42"} : Words{});
  }
}

TEST_F(ReportCycle, AGenericClientIsOpenedWhileItCapturesAndPlays) {
  start(42, genericBundle);
  EXPECT_EQ(opened(), Words{});
  desktop().audio = {{genericBundle, true, true}};
  EXPECT_EQ(opened(), Words{"42"});
  desktop().applications[0].regular = false;
  EXPECT_EQ(opened(), Words{});
  desktop().applications[0].regular = true;
  desktop().audio = {{genericBundle, true, false}};
  EXPECT_EQ(opened(), Words{});
}

TEST_F(ReportCycle, AnApplicationWithATrackedCallIsOpenedWhateverItIs) {
  start(42, genericBundle, {window("w", "Call", callControls())});
  desktop().audio = {{genericBundle, true, true}};
  EXPECT_EQ(told(), Words{"joined 1"});
  desktop().audio = {{genericBundle, false, false}};
  EXPECT_EQ(told(), Words{"unknown 2"}) << "silence alone ends nothing";
  EXPECT_EQ(timesCalled("open 42"), 1U);
  desktop().applications[0].bundleIdentifier.reset();
  EXPECT_EQ(opened(), Words{"42"});
}

// Order.

TEST_F(ReportCycle, EqualApplicationsTakeTurnsAtTheHead) {
  start(1, chrome);
  start(2, "com.microsoft.edgemac");
  start(3, "com.apple.Safari");
  EXPECT_EQ(opened(), (Words{"1", "2", "3"}));
  EXPECT_EQ(opened(), (Words{"2", "3", "1"}));
  EXPECT_EQ(opened(), (Words{"3", "1", "2"}));
  EXPECT_EQ(opened(), (Words{"1", "2", "3"}));
}

TEST_F(ReportCycle, OnlyCandidatesTakeTurns) {
  start(1, chrome);
  start(100, "org.example.Editor");
  start(2, "com.microsoft.edgemac");
  start(101, "org.example.Mail");
  EXPECT_EQ(opened(), (Words{"1", "2"}));
  EXPECT_EQ(opened(), (Words{"2", "1"}));
  EXPECT_EQ(opened(), (Words{"1", "2"}));
}

TEST_F(ReportCycle, TheTurnsGoOnThroughUntrustedCycles) {
  start(1, chrome);
  start(2, "com.microsoft.edgemac");
  EXPECT_EQ(opened(), (Words{"1", "2"}));
  desktop().trusted = false;
  EXPECT_EQ(opened(), Words{});
  desktop().trusted = true;
  EXPECT_EQ(opened(), (Words{"1", "2"}));
}

TEST_F(ReportCycle, TheOffsetStartsAgainAfterAMillionCycles) {
  EXPECT_EQ(scanOffsetModulus, 1'000'000);
  state.scan.scanOffset = 999'998;
  (void)cycle();
  EXPECT_EQ(state.scan.scanOffset, 999'999);
  (void)cycle();
  EXPECT_EQ(state.scan.scanOffset, 0);
  (void)cycle();
  EXPECT_EQ(state.scan.scanOffset, 1);
}

TEST_F(ReportCycle, TheNativeClientInFrontComesFirstThenCallsThenTheRestInTurn) {
  start(1, "com.microsoft.edgemac");
  start(2, "com.cisco.webexmeetingsapp");
  start(3, chrome, meetWindow());
  start(4, "us.zoom.xos");
  desktop().front = 4;
  EXPECT_EQ(opened(), (Words{"4", "1", "2", "3"})) << "no call is tracked yet";
  EXPECT_EQ(opened(), (Words{"4", "3", "2", "1"})) << "offset 1: 2, 3, 4, 1";
  desktop().front = 1;
  EXPECT_EQ(opened(), (Words{"3", "4", "1", "2"})) << "a browser in front has no rank of its own";
  desktop().front = 2;
  EXPECT_EQ(opened(), (Words{"2", "3", "4", "1"})) << "offset 3: 4, 1, 2, 3";
  desktop().front.reset();
  EXPECT_EQ(opened(), (Words{"3", "1", "2", "4"}));
}

TEST_F(ReportCycle, WhoIsInFrontIsAskedAgainForTheNextInterval) {
  start(1, "us.zoom.xos", {window("z", "Zoom")});
  start(7, chrome, meetWindow(lobbyControls()));
  desktop().front = 1;
  when("open 7", [] { desktop().front = 7; });
  EXPECT_EQ(opened(), (Words{"1", "7"}));
  EXPECT_EQ(state.cadence.lastPID, 7);
  EXPECT_EQ(state.cadence.lastFront, "7:meet:abc-defg-hij|Standup");
}

// The deadline.

TEST_F(ReportCycle, ApplicationsReachedAtTheDeadlineAreAliveButNotRead) {
  EXPECT_EQ(cycleBudget, 1.2);
  start(1, "com.microsoft.edgemac");
  start(7, chrome, meetWindow());
  (void)cycle();
  EXPECT_EQ(state.tracker.calls.size(), 1U);
  start(2, "us.zoom.xos");
  desktop().front = 2;  // goes before the call
  desktop().uptime = 2000;
  clockAt("read app:2 AXWindows", 2000 + 1.2);
  EXPECT_EQ(told(), Words{"unknown 2"}) << "not read is not left";
  EXPECT_EQ(openedForSamples(), Words{"2"});
  EXPECT_EQ(call().missing, 0);
}

TEST_F(ReportCycle, ApplicationsReachedJustBeforeTheDeadlineAreRead) {
  start(1, chrome);
  start(2, "com.microsoft.edgemac");
  clockAt("read app:1 AXWindows", std::nextafter(1001.2, 0.0));
  EXPECT_EQ(opened(), (Words{"1", "2"}));
  state = {};
  desktop().uptime = 1000;
  clockAt("read app:1 AXWindows", 1001.2);
  EXPECT_EQ(opened(), Words{"1"});
}

TEST_F(ReportCycle, TheTimeOfReadingAudioDoesNotCountAgainstTheDeadline) {
  start(7, chrome);
  clockAt("audio", 1005);
  EXPECT_EQ(opened(), Words{"7"});
}

TEST_F(ReportCycle, TheTimeOfListingApplicationsCounts) {
  start(7, chrome);
  clockAt("applications", 1001.2);
  EXPECT_EQ(opened(), Words{});
}

TEST_F(ReportCycle, ASlowApplicationDoesNotStarveTheOthers) {
  for (std::int32_t pid = 1; pid <= 3; ++pid) start(pid, "com.apple.Safari");
  for (std::int32_t pid = 1; pid <= 3; ++pid) {
    when("read app:" + std::to_string(pid) + " AXWindows", [] { desktop().uptime += 2; });
  }
  EXPECT_EQ(opened(), Words{"1"});
  EXPECT_EQ(opened(), Words{"2"});
  EXPECT_EQ(opened(), Words{"3"});
}

// The next interval.

TEST_F(ReportCycle, AMeetingPageInFrontIsLookedAtSoonerUntilItsCallIsTracked) {
  start(7, chrome, meetWindow(lobbyControls()));
  desktop().front = 7;
  (void)cycle();
  EXPECT_EQ(interval, 0.5);
  place(meetWindow(callControls())[0]);
  (void)cycle();
  EXPECT_EQ(interval, 1.0);
  EXPECT_EQ(state.cadence.lastFront, "7:meet:abc-defg-hij|Standup");
}

TEST_F(ReportCycle, NothingSuspectedIsIdle) {
  (void)cycle();
  EXPECT_EQ(interval, 1.0) << "nothing in front";
  start(7, chrome, {window("w", "News", {page("p", "https://example.org/")})});
  start(8, "com.microsoft.edgemac", {window("w8", "Meet", {page("p8", meetAddress)})});
  start(9, "org.example.Editor");
  for (const std::int32_t front : {7, 9}) {
    desktop().front = front;
    (void)cycle();
    EXPECT_EQ(interval, 1.0) << "a meeting page that is not in front";
  }
}

TEST_F(ReportCycle, AGenericClientInFrontIsNotSuspected) {
  start(42, genericBundle, {window("w", "Call")});
  desktop().audio = {{genericBundle, true, true}};
  desktop().front = 42;
  (void)cycle();
  EXPECT_EQ(interval, 1.0);
  EXPECT_EQ(state.cadence.lastFront, std::nullopt);
}

TEST_F(ReportCycle, FastModeIsCountedFromTheEndOfTheCycle) {
  start(7, chrome, meetWindow(lobbyControls()));
  desktop().front = 7;
  clockAt("read p AXURL", 1000.4);
  (void)cycle();
  EXPECT_DOUBLE_EQ(state.cadence.fastUntil, 1030.4);
}

}  // namespace
}  // namespace callmonitor
