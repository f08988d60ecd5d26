// Whole calls, from the first page to the last record.
#include <gtest/gtest.h>

#include "support/cycle.h"

namespace callmonitor {
namespace {

using namespace support;

struct CallStory : CycleTest {
  // Replaces what the page of the browser shows.
  void browse(const std::string& address, const std::vector<Node>& shown,
              const std::string& title = "Standup") {
    showWindows(7, {window("w", title, {page("p", address, shown)})});
  }
  void play(bool input, bool output) {
    desktop().audio = {{"com.google.Chrome.helper", input, output}};
  }
  void startBrowser() {
    start(7, "com.google.Chrome");
    desktop().front = 7;
    play(false, false);
  }
};

const std::string landing = "https://meet.google.com/landing";

TEST_F(CallStory, APageIsOpenedJoinedHeardAndLeft) {
  startBrowser();
  browse(landing, {button("New meeting")});
  EXPECT_EQ(told(), Words{}) << "a landing page opens nothing";
  browse(meetAddress, lobbyControls());
  EXPECT_EQ(told(), Words{}) << "a lobby opens nothing";

  browse(meetAddress, callControls());
  play(true, true);
  auto records = ofKind(cycle(), "observation");
  ASSERT_EQ(records.size(), 1U);
  const std::string session = records[0]["sessionId"];
  EXPECT_EQ(records[0]["state"], "joined");
  EXPECT_EQ(records[0]["callKey"], meetKey);
  EXPECT_EQ(records[0]["mediaActive"], false);

  browse(meetAddress, callControls(/*mediaOn=*/true));
  records = ofKind(cycle(), "observation");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["mediaActive"], true);
  EXPECT_EQ(records[0]["sequence"], 2);

  browse(landing, leftNotice());
  records = ofKind(cycle(), "observation");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["state"], "left");
  EXPECT_EQ(records[0]["callKey"], meetKey);
  EXPECT_EQ(records[0]["sessionId"], session);
  EXPECT_EQ(records[0]["sequence"], 3);
  EXPECT_EQ(records[0]["mediaActive"], false);

  EXPECT_EQ(told(), Words{}) << "left once only";
}

TEST_F(CallStory, ACallWhoseTabIsClosedInSilenceEndsOnTheSecondCycle) {
  startBrowser();
  browse(meetAddress, callControls());
  play(true, true);
  EXPECT_EQ(told(), Words{"joined 1"});
  play(false, false);
  EXPECT_EQ(told(), Words{"joined 2"});
  close("p");
  showWindows(7, {window("w", "Standup", {group({})})});
  EXPECT_EQ(told(), Words{"unknown 3"});
  EXPECT_EQ(told(), Words{"left 4"});
  EXPECT_EQ(told(), Words{});
}

TEST_F(CallStory, ACallWhosePageIsOutOfSightGoesOn) {
  startBrowser();
  browse(meetAddress, callControls());
  play(true, true);
  (void)cycle();
  play(false, false);
  // Another tab is in front: the page is no longer found but still exists.
  showWindows(7, {window("w", "News", {page("p2", "https://example.org/")})});
  for (int sequence = 2; sequence < 8; ++sequence) {
    EXPECT_EQ(told(), Words{"unknown " + std::to_string(sequence)});
  }
  browse(meetAddress, callControls());
  EXPECT_EQ(told(), Words{"joined 8"});
}

TEST_F(CallStory, ACallWhoseSilenceIsNotKnownGoesOnAfterItsTabIsClosed) {
  startBrowser();
  browse(meetAddress, callControls());
  play(true, true);
  (void)cycle();
  desktop().audio.reset();
  close("p");
  showWindows(7, {window("w", "Standup", {group({})})});
  for (int sequence = 2; sequence < 6; ++sequence) {
    EXPECT_EQ(told(), Words{"unknown " + std::to_string(sequence)});
  }
  quit(7);
  EXPECT_EQ(told(), Words{"left 6"});
}

TEST_F(CallStory, AHungBrowserIsNotRead) {
  startBrowser();
  browse(meetAddress, callControls());
  (void)cycle();
  desktop().elements["app:7"].insert_or_assign(
      "AXWindows", scripted::codeAnswer(platform::code::cannotComplete));
  for (int sequence = 2; sequence < 6; ++sequence) {
    EXPECT_EQ(told(), Words{"unknown " + std::to_string(sequence)});
  }
}

TEST_F(CallStory, WhatOthersWriteChangesNothing) {
  startBrowser();
  std::vector<Node> shown = callControls();
  Node chat = titled(group({heading("You left the meeting"), button("Unmute this chat message"),
                            button("Join now")}),
                     "In-call messages");
  shown.push_back(chat);
  browse(meetAddress, shown);
  EXPECT_EQ(told(), Words{"joined 1"});
  browse(meetAddress, {titled(group({heading("You left the meeting")}), "Chat")});
  EXPECT_EQ(told(), Words{"unknown 2"});
}

TEST_F(CallStory, ATabThatMovesToAnotherWindowKeepsItsSession) {
  startBrowser();
  browse(meetAddress, callControls());
  (void)cycle();
  const std::string session = call().id;
  close("w");
  close("p");
  showWindows(7, {window("w2", "Standup", {page("p2", meetAddress, callControls())})});
  EXPECT_EQ(told(), Words{"joined 2"});
  EXPECT_EQ(call().id, session);
}

TEST_F(CallStory, AReloadedPageInTheSameWindowKeepsItsSession) {
  startBrowser();
  browse(meetAddress, callControls());
  (void)cycle();
  close("p");
  showWindows(7, {window("w", "Standup", {page("p2", meetAddress, callControls())})});
  EXPECT_EQ(told(), Words{"joined 2"});
}

TEST_F(CallStory, ATabThatGoesOnToAnotherMeetingOpensItAndLeavesTheFirstUnknown) {
  startBrowser();
  browse(meetAddress, callControls());
  EXPECT_EQ(told(), Words{"joined 1"});
  browse("https://meet.google.com/xxx-yyyy-zzz", callControls());
  EXPECT_EQ(told(), (Words{"unknown 2", "joined 1"}));
  EXPECT_EQ(told(), (Words{"unknown 3", "joined 2"}));
  quit(7);
  EXPECT_EQ(told(), (Words{"left 4", "left 3"}));
}

TEST_F(CallStory, ANativeWindowThatIsRecreatedOpensACallAndTheOldOneEndsByItsOwnRules) {
  start(42, "us.zoom.xos", {window("m", "Zoom Meeting", callControls())});
  EXPECT_EQ(told(), Words{"joined 1"});
  close("m");
  showWindows(42, {window("n", "Zoom Meeting", callControls())});
  EXPECT_EQ(told(), (Words{"unknown 2", "joined 1"}));
  EXPECT_EQ(told(), (Words{"unknown 3", "joined 2"})) << "a joined window keeps the old call";
  close("n");
  showWindows(42, {});
  EXPECT_EQ(told(), (Words{"unknown 4", "unknown 3"}));
  EXPECT_EQ(told(), (Words{"left 5", "left 4"}));
}

TEST_F(CallStory, ASecondBrowserThatShowsTheSameMeetingOpensNoSecondCall) {
  startBrowser();
  browse(meetAddress, callControls());
  start(8, "com.microsoft.edgemac",
        {window("w8", "Standup", {page("p8", meetAddress, callControls())})});
  EXPECT_EQ(told(), Words{"joined 1"});
  EXPECT_EQ(told(), Words{"joined 2"});
  EXPECT_EQ(call().pid, 7);
}

TEST_F(CallStory, ANativeCallEndsOnTheSecondCycleAfterItsWindowIsClosed) {
  start(42, "us.zoom.xos", {window("m", "Zoom Meeting", callControls())});
  EXPECT_EQ(told(), Words{"joined 1"});
  close("m");
  showWindows(42, {window("h", "Zoom Workplace")});
  EXPECT_EQ(told(), Words{"unknown 2"});
  EXPECT_EQ(told(), Words{"left 3"});
}

TEST_F(CallStory, ANativeCallThatIsStillHeardGoesOnWithoutItsWindow) {
  start(42, "us.zoom.xos", {window("m", "Zoom Meeting", callControls())});
  (void)cycle();
  close("m");
  showWindows(42, {});
  desktop().audio = {{"us.zoom.xos", true, false}};
  EXPECT_EQ(told(), Words{"unknown 2"});
  EXPECT_EQ(told(), Words{"unknown 3"});
  desktop().audio = {{"us.zoom.xos", false, false}};
  EXPECT_EQ(told(), Words{"unknown 4"});
  EXPECT_EQ(told(), Words{"left 5"});
}

TEST_F(CallStory, ANativeWindowThatIsMerelyHiddenKeepsItsCall) {
  start(42, "us.zoom.xos", {window("m", "Zoom Meeting", callControls())});
  (void)cycle();
  showWindows(42, {});  // the window still exists
  for (int sequence = 2; sequence < 6; ++sequence) {
    EXPECT_EQ(told(), Words{"unknown " + std::to_string(sequence)});
  }
}

TEST_F(CallStory, AGenericClientsCallEndsByAbsenceNotBySilenceAlone) {
  const std::string bundle = "org.example.CustomCalls";
  start(42, bundle, {window("c", "Call", callControls())});
  desktop().audio = {{bundle, true, true}};
  EXPECT_EQ(told(), Words{"joined 1"});
  desktop().audio = {{bundle, false, false}};
  EXPECT_EQ(told(), Words{"unknown 2"});
  EXPECT_EQ(told(), Words{"unknown 3"});
  close("c");
  showWindows(42, {});
  EXPECT_EQ(told(), Words{"unknown 4"});
  EXPECT_EQ(told(), Words{"left 5"});
}

}  // namespace
}  // namespace callmonitor
