// What cycles remember of one another, and what they forget; cycles without trust.
#include <gtest/gtest.h>

#include "support/cycle.h"

namespace callmonitor {
namespace {

using namespace support;

struct CycleMemory : CycleTest {
  void showCall() {
    start(7, "com.google.Chrome",
          {window("w", "Standup", {page("p", meetAddress, callControls())})});
  }
};

const std::string enable = "set app:7 AXEnhancedUserInterface true";

// Without trust.

TEST_F(CycleMemory, WithoutTrustNothingIsAskedOfApplicationsAndEveryCallIsUnknown) {
  showCall();
  desktop().front = 7;
  desktop().audio = {{"com.google.Chrome", true, true}};
  EXPECT_EQ(told(), Words{"joined 1"});
  desktop().trusted = false;
  EXPECT_EQ(told(), Words{"unknown 2"});
  EXPECT_EQ(timesCalled("audio"), 0U);
  EXPECT_EQ(timesCalled("applications"), 0U);
  EXPECT_TRUE(callsAfter("open ").empty());
  EXPECT_TRUE(callsAfter("read ").empty());
  EXPECT_EQ(told(), Words{"unknown 3"});
  desktop().trusted = true;
  EXPECT_EQ(told(), Words{"joined 4"}) << "the next trusted cycle scans normally";
}

TEST_F(CycleMemory, WithoutTrustTheIntervalIsIdle) {
  showCall();
  place(page("p", meetAddress, lobbyControls()));
  desktop().front = 7;
  (void)cycle();
  EXPECT_EQ(interval, 0.5);
  desktop().trusted = false;
  (void)cycle();
  EXPECT_EQ(interval, 1.0);
  desktop().trusted = true;
  (void)cycle();
  EXPECT_EQ(interval, 0.5) << "fast mode was not touched";
}

TEST_F(CycleMemory, WithoutTrustFromTheStartHealthIsAllThereIsToTellOfCalls) {
  showCall();
  desktop().trusted = false;
  for (int i = 0; i < 3; ++i) {
    const auto records = cycle();
    EXPECT_TRUE(ofKind(records, "observation").empty());
    ASSERT_EQ(ofKind(records, "health").size(), 1U);
    EXPECT_EQ(ofKind(records, "health")[0]["trusted"], false);
    EXPECT_EQ(interval, 1.0);
  }
}

// Enhanced accessibility.

TEST_F(CycleMemory, AnApplicationThatQuitsIsForgottenInTheNextTrustedCycle) {
  showCall();
  (void)cycle();
  EXPECT_TRUE(state.scan.accessibilityEnabled.contains(7));
  quit(7);
  desktop().trusted = false;
  (void)cycle();
  EXPECT_TRUE(state.scan.accessibilityEnabled.contains(7)) << "nothing is known without trust";
  desktop().trusted = true;
  (void)cycle();
  EXPECT_TRUE(state.scan.accessibilityEnabled.empty());
}

TEST_F(CycleMemory, AnApplicationThatIsAliveButNotReadIsNotForgotten) {
  showCall();
  (void)cycle();
  desktop().uptime = 2000;
  clockAt("applications", 2001.2);
  (void)cycle();
  EXPECT_TRUE(openedForSamples().empty());
  EXPECT_EQ(state.scan.accessibilityEnabled, (std::map<std::int32_t, double>{{7, 1.0}}));
}

TEST_F(CycleMemory, AWebAppRelaunchedUnderTheSameProcessIdentifierIsAskedAgain) {
  start(7, webApp);
  (void)cycle();
  EXPECT_EQ(timesCalled(enable), 1U);
  (void)cycle();
  EXPECT_EQ(timesCalled(enable), 0U);
  relaunch(7, 2.0);
  (void)cycle();
  EXPECT_EQ(timesCalled(enable), 1U);
  EXPECT_EQ(state.scan.accessibilityEnabled, (std::map<std::int32_t, double>{{7, 2.0}}));
}

TEST_F(CycleMemory, ARelaunchThatRefusesIsForgottenUnderItsOldLaunch) {
  start(7, webApp);
  (void)cycle();
  relaunch(7, 2.0);
  desktop().setAttributeCode = platform::code::failure;
  (void)cycle();
  EXPECT_TRUE(state.scan.accessibilityEnabled.empty());
}

// Lobbies.

TEST_F(CycleMemory, ALobbyIsForgottenOnceItsProcessIsGoneTrustedOrNot) {
  for (const bool trusted : {true, false}) {
    desktop().trusted = trusted;
    start(8, "us.zoom.xos");
    state.clients.lobbyRoots = {{8, {scripted::element("lobby"), "zoom:lobby-1"}}};
    desktop().front.reset();
    (void)cycle();
    ASSERT_TRUE(state.clients.lobbyRoots.contains(8));
    EXPECT_EQ(state.clients.lobbyRoots.at(8).key, "zoom:lobby-1");
    quit(8);
    (void)cycle();
    EXPECT_TRUE(state.clients.lobbyRoots.empty());
  }
}

// Elements.

TEST_F(CycleMemory, ElementsThatACycleDidNotTouchAreForgotten) {
  start(7, "com.google.Chrome",
        {window("w1", "", {page("p1", "https://example.org/")}), window("w2", "")});
  (void)cycle();
  EXPECT_EQ(state.scan.elements.size(), 3U);
  showWindows(7, {window("w2", "")});
  (void)cycle();
  ASSERT_EQ(state.scan.elements.size(), 1U);
  EXPECT_EQ(state.scan.elements.begin()->second, scripted::element("w2"));
}

TEST_F(CycleMemory, TheViewOfATrackedCallIsRememberedWhileItIsNotRead) {
  showCall();
  (void)cycle();
  const std::string session = call().id;
  const std::string element = call().element;
  const std::string shownIn = call().window;
  for (const bool trusted : {false, true}) {
    desktop().trusted = trusted;
    desktop().uptime = 2000;
    clockAt("applications", 2001.2);
    EXPECT_EQ(ofKind(cycle(), "observation").at(0)["state"], "unknown");
    EXPECT_EQ(state.scan.elements.at(element), scripted::element("p"));
    EXPECT_EQ(state.scan.elements.at(shownIn), scripted::element("w"));
  }
  desktop().onCall = nullptr;
  EXPECT_EQ(told(), Words{"joined 4"});
  EXPECT_EQ(call().id, session);
  EXPECT_EQ(call().element, element) << "under the same identifier";
}

TEST_F(CycleMemory, OnceTheCallHasLeftItsViewIsForgotten) {
  showCall();
  (void)cycle();
  quit(7);
  EXPECT_EQ(told(), Words{"left 2"});
  EXPECT_TRUE(state.scan.elements.empty());
  EXPECT_TRUE(state.scan.registry.identifiers.empty());
}

TEST_F(CycleMemory, ARecycledProcessIdentifierDoesNotInheritACall) {
  showCall();
  (void)cycle();
  const std::string session = call().id;
  relaunch(7, 2.0);
  EXPECT_EQ(told(), (Words{"left 2", "joined 1"}));
  EXPECT_NE(call().id, session);
}

}  // namespace
}  // namespace callmonitor
