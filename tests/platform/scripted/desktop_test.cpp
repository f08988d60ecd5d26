// The desktop made of data behaves as the seam promises.
#include "platform/scripted/desktop.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace callmonitor {
namespace {

using platform::Element;
using platform::Reading;
using scripted::desktop;
namespace code = platform::code;

struct ScriptedDesktop : testing::Test {
  ScriptedDesktop() { scripted::reset(); }
};

using Calls = std::vector<std::string>;

TEST_F(ScriptedDesktop, HandlesOfOneKeyAreEqualAndHashAlike) {
  EXPECT_EQ(scripted::element("a"), scripted::element("a"));
  EXPECT_FALSE(scripted::element("a") == scripted::element("b"));
  const std::unordered_set<Element> set{scripted::element("a"), scripted::element("a"),
                                        scripted::element("b")};
  EXPECT_EQ(set.size(), 2U);
}

TEST_F(ScriptedDesktop, ADefaultHandleMeansNoElement) {
  EXPECT_EQ(Element(), Element());
  EXPECT_FALSE(Element() == scripted::element("a"));
  EXPECT_FALSE(Element() == scripted::element(""));
  EXPECT_EQ(platform::readAttribute(Element(), "AXRole").code, code::illegalArgument);
  EXPECT_EQ(platform::setAttribute(Element(), "AXRole", true), code::illegalArgument);
}

TEST_F(ScriptedDesktop, ReadsAnswerWhatWasWrittenDown) {
  desktop().elements["a"] = {{"text", scripted::textAnswer("t")},
                             {"address", scripted::addressAnswer("u")},
                             {"flag", scripted::flagAnswer(true)},
                             {"element", scripted::elementAnswer("b")},
                             {"elements", scripted::elementsAnswer({"b", "c"})},
                             {"failure", scripted::codeAnswer(code::failure)}};
  const auto read = [](std::string_view name) {
    return platform::readAttribute(scripted::element("a"), name);
  };
  EXPECT_EQ(std::get<std::string>(read("text").value), "t");
  EXPECT_EQ(std::get<platform::Address>(read("address").value).text, "u");
  EXPECT_TRUE(std::get<bool>(read("flag").value));
  EXPECT_EQ(std::get<Element>(read("element").value), scripted::element("b"));
  EXPECT_EQ(std::get<std::vector<Element>>(read("elements").value),
            (std::vector{scripted::element("b"), scripted::element("c")}));
  EXPECT_EQ(read("text").code, code::success);
  EXPECT_EQ(read("failure").code, code::failure);
  EXPECT_EQ(read("missing").code, code::attributeUnsupported);
}

TEST_F(ScriptedDesktop, AnElementThatIsNotListedNoLongerExistsButKeepsItsIdentity) {
  desktop().elements["a"] = {{"AXRole", scripted::textAnswer("AXWindow")}};
  const Element handle = scripted::element("a");
  desktop().elements.erase("a");
  EXPECT_EQ(platform::readAttribute(handle, "AXRole").code, code::invalidElement);
  EXPECT_EQ(handle, scripted::element("a"));
}

TEST_F(ScriptedDesktop, AnAnswerCostsItsTimeOnBothClocks) {
  desktop().elements["a"] = {{"AXRole", {{code::success, std::string("AXWindow")}, 0.125}}};
  const double wall = platform::wallClock();
  EXPECT_EQ(platform::readAttribute(scripted::element("a"), "AXRole").code, code::success);
  EXPECT_DOUBLE_EQ(platform::systemUptime(), 1000.125);
  EXPECT_DOUBLE_EQ(platform::wallClock(), wall + 0.125);
}

TEST_F(ScriptedDesktop, AnAnswerThatTakesLongerThanTheTimeOutCannotComplete) {
  desktop().elements["a"] = {{"AXRole", {{code::success, std::string("AXWindow")}, 0.3}}};
  (void)platform::applicationElement(42, 0.2);
  EXPECT_EQ(platform::readAttribute(scripted::element("a"), "AXRole").code, code::cannotComplete);
  EXPECT_DOUBLE_EQ(platform::systemUptime(), 1000.2) << "and costs no more than the time-out";
  (void)platform::applicationElement(42, 0.5);
  EXPECT_EQ(platform::readAttribute(scripted::element("a"), "AXRole").code, code::success);
}

TEST_F(ScriptedDesktop, ApplicationsAreFoundByProcessIdentifier) {
  desktop().applications = {{1, 5.0, "one", true}, {2, std::nullopt, std::nullopt, false}};
  EXPECT_EQ(platform::runningApplications().size(), 2U);
  EXPECT_EQ(platform::runningApplication(1)->bundleIdentifier, "one");
  EXPECT_EQ(platform::runningApplication(2)->launchedAt, std::nullopt);
  EXPECT_FALSE(platform::runningApplication(3).has_value());
  EXPECT_FALSE(platform::frontmostApplication().has_value());
  desktop().front = 2;
  EXPECT_EQ(platform::frontmostApplication()->pid, 2);
  desktop().front = 3;
  EXPECT_FALSE(platform::frontmostApplication().has_value()) << "a process that does not run";
}

TEST_F(ScriptedDesktop, ListsAreAbsentUntilTheyAreSet) {
  EXPECT_FALSE(platform::onScreenWindows().has_value());
  EXPECT_FALSE(platform::audioProcesses().has_value());
  desktop().windows.emplace();
  desktop().audio.emplace();
  EXPECT_TRUE(platform::onScreenWindows()->empty());
  EXPECT_TRUE(platform::audioProcesses()->empty());
}

TEST_F(ScriptedDesktop, EveryCallIsRecordedInOrder) {
  platform::prepareMonitoring();
  platform::prepareLooking();
  platform::inCycle([] {
    (void)platform::accessibilityTrusted();
    (void)platform::audioProcesses();
    (void)platform::runningApplications();
    (void)platform::runningApplication(42);
    (void)platform::frontmostApplication();
    const Element application = platform::applicationElement(42, 0.2);
    (void)platform::setAttribute(application, "AXEnhancedUserInterface", true);
    (void)platform::readAttribute(application, "AXWindows");
    platform::expectSearch(application, 1, 1);
    platform::expectScan(application, 1, 1);
    (void)platform::onScreenWindows();
  });
  EXPECT_EQ(desktop().calls,
            (Calls{"prepareMonitoring", "prepareLooking", "cycle begins", "trusted", "audio",
                   "applications", "application 42", "frontmost", "open 42",
                   "set app:42 AXEnhancedUserInterface true", "read app:42 AXWindows",
                   "search app:42", "scan app:42", "windows", "cycle ends"}));
}

TEST_F(ScriptedDesktop, ADesktopCanChangeInTheMiddleOfACycle) {
  desktop().trusted = true;
  desktop().onCall = [](const std::string& call) {
    if (call == "trusted") desktop().trusted = false;
  };
  EXPECT_FALSE(platform::accessibilityTrusted()) << "the change comes before the answer";
}

TEST_F(ScriptedDesktop, IdentifiersAreCanonicalUpperCaseAndNeverTheSame) {
  desktop().identifiersMade = 0xABCDE;
  const std::string first = platform::randomUUID();
  EXPECT_EQ(first, "00000000-0000-4000-8000-0000000ABCDF");
  EXPECT_NE(platform::randomUUID(), first);
}

TEST_F(ScriptedDesktop, TimersFireInOrderOfTimeAndMoveTheClock) {
  std::vector<std::pair<std::string, double>> fired;
  const auto fire = [&](const std::string& name) {
    fired.emplace_back(name, platform::systemUptime());
  };
  platform::afterDelay(2, [&] { fire("late"); });
  platform::afterDelay(1, [&] {
    fire("early");
    platform::afterDelay(0.5, [&] { fire("between"); });
  });
  EXPECT_TRUE(fired.empty()) << "nothing fires before the loop runs";
  desktop().runUntil = 1010;
  platform::runLoop();
  EXPECT_EQ(fired, (std::vector<std::pair<std::string, double>>{
                       {"early", 1001}, {"between", 1001.5}, {"late", 1002}}));
}

TEST_F(ScriptedDesktop, TheRunLoopEndsWithNothingDueInTime) {
  bool fired = false;
  platform::afterDelay(5, [&] { fired = true; });
  desktop().runUntil = 1004;
  platform::runLoop();
  EXPECT_FALSE(fired);
  EXPECT_EQ(desktop().timers.size(), 1U);
  EXPECT_EQ(platform::systemUptime(), 1000);
}

}  // namespace
}  // namespace callmonitor
