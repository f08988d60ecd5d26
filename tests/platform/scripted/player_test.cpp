// The scripted desktop plays a scenario in virtual time.
#include "platform/scripted/player.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/scenario/loader.h"
#include "platform/scripted/desktop.h"

namespace callmonitor {
namespace {

using platform::Element;
using platform::Reading;
using scripted::desktop;
namespace code = platform::code;

void play(const std::string& text) {
  const scenario::Loaded loaded = scenario::parseScenario(
      text, [](const std::string&) { return std::optional<std::string>(); });
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  scripted::play(*loaded.scenario);
}

std::string read(const std::string& key, const std::string& attribute) {
  const Reading reading = platform::readAttribute(scripted::element(key), attribute);
  const auto* text = std::get_if<std::string>(&reading.value);
  return text == nullptr ? std::to_string(reading.code) : *text;
}

const std::string opening = R"(
app a b.c
  window w "Title"
    button x "Press"
)";

TEST(Player, TheDesktopOpensAsTheScenarioSays) {
  play(opening + "front a\ntrust no\naudio a in\nend 10s\n");
  EXPECT_EQ(platform::systemUptime(), scenario::startUptime);
  EXPECT_EQ(platform::wallClock(), scenario::startWallClock);
  EXPECT_FALSE(platform::accessibilityTrusted());
  ASSERT_EQ(platform::runningApplications().size(), 1U);
  EXPECT_EQ(platform::frontmostApplication()->pid, 101);
  EXPECT_EQ(platform::audioProcesses()->front().bundle, "b.c");
  EXPECT_EQ(platform::onScreenWindows()->front().name, "Title");
  const Element application = platform::applicationElement(101, 0.2);
  const Reading windows = platform::readAttribute(application, "AXWindows");
  EXPECT_EQ(std::get<std::vector<Element>>(windows.value),
            std::vector<Element>{scripted::element("app:101/w")});
  EXPECT_EQ(read("app:101/x", "AXTitle"), "Press");
  EXPECT_EQ(platform::setAttribute(application, "AXEnhancedUserInterface", true), code::success);
}

TEST(Player, AStepHappensBeforeTheFirstCallAtItsTime) {
  play(opening + "at 2s:\n  set x \"Go\"\n  trust no\nend 10s\n");
  desktop().uptime = scenario::startUptime + 1.999;
  EXPECT_EQ(read("app:101/x", "AXTitle"), "Press");
  EXPECT_TRUE(platform::accessibilityTrusted());
  desktop().uptime = scenario::startUptime + 2;
  EXPECT_FALSE(platform::accessibilityTrusted());
  EXPECT_EQ(read("app:101/x", "AXTitle"), "Go");
}

TEST(Player, AReadThatTakesTimeLetsAStepHappenInTheMiddleOfACycle) {
  play(opening + "slow x AXRole 150ms\nat 100ms:\n  set x \"Go\"\nend 10s\n");
  EXPECT_EQ(read("app:101/x", "AXTitle"), "Press");
  EXPECT_EQ(read("app:101/x", "AXRole"), "AXButton");
  EXPECT_EQ(read("app:101/x", "AXTitle"), "Go");
}

TEST(Player, StepsThatWereMissedHappenInTheirOrder) {
  play(opening + "at 2s:\n  set x \"second\"\nat 1s:\n  set x \"first\"\nend 10s\n");
  desktop().uptime = scenario::startUptime + 5;
  EXPECT_EQ(read("app:101/x", "AXTitle"), "second");
}

TEST(Player, AStepRepeatsUntilItsLastTime) {
  play(opening + "at 1s every 2s until 5s:\n  add w\n    button\nend 10s\n");
  const auto children = [](double seconds) {
    desktop().uptime = scenario::startUptime + seconds;
    const Reading reading = platform::readAttribute(scripted::element("app:101/w"), "AXChildren");
    return std::get<std::vector<Element>>(reading.value).size();
  };
  EXPECT_EQ(children(0), 1U);
  EXPECT_EQ(children(1), 2U);
  EXPECT_EQ(children(4.9), 3U);
  EXPECT_EQ(children(5), 4U);
  EXPECT_EQ(children(9), 4U);
}

TEST(Player, ASlowApplicationCostsItsDelayOrTheTimeOut) {
  play(opening + "slow a 50ms\nslow x AXTitle 500ms\nend 10s\n");
  (void)platform::applicationElement(101, 0.2);
  EXPECT_EQ(read("app:101/x", "AXRole"), "AXButton");
  EXPECT_DOUBLE_EQ(platform::systemUptime(), scenario::startUptime + 0.05);
  EXPECT_EQ(read("app:101/x", "AXTitle"), "-25204") << "an attribute's own delay goes first";
  EXPECT_DOUBLE_EQ(platform::systemUptime(), scenario::startUptime + 0.25);
  EXPECT_EQ(platform::setAttribute(scripted::element("app:101"), "AXEnhancedUserInterface", true),
            code::success);
  EXPECT_DOUBLE_EQ(platform::systemUptime(), scenario::startUptime + 0.3);
}

TEST(Player, AWriteFailsWhereTheScenarioSaysSo) {
  play(opening + "fails a AXEnhancedUserInterface unsupported\nend 10s\n");
  EXPECT_EQ(platform::setAttribute(scripted::element("app:101"), "AXEnhancedUserInterface", true),
            code::attributeUnsupported);
}

TEST(Player, AClosedElementSaysSoOnlyWhileItsApplicationCanAnswer) {
  play(opening + "at 1s:\n  close x\nat 2s:\n  slow a 1s\nat 3s:\n  quit a\nend 10s\n");
  (void)platform::applicationElement(101, 0.2);
  desktop().uptime = scenario::startUptime + 1;
  EXPECT_EQ(read("app:101/x", "AXRole"), "-25202");
  desktop().uptime = scenario::startUptime + 2;
  EXPECT_EQ(read("app:101/x", "AXRole"), "-25204") << "it hangs";
  desktop().uptime = scenario::startUptime + 3;
  EXPECT_EQ(read("app:101/x", "AXRole"), "-25204") << "it runs no more";
  EXPECT_EQ(read("app:101/w", "AXRole"), "-25204");
}

TEST(Player, NobodyAnswersForAnApplicationThatRunsNoMore) {
  play(opening + "at 1s:\n  quit a\nend 10s\n");
  desktop().uptime = scenario::startUptime + 1;
  EXPECT_EQ(read("app:101", "AXWindows"), "-25204");
  EXPECT_EQ(platform::setAttribute(scripted::element("app:101"), "AXEnhancedUserInterface", true),
            code::cannotComplete);
}

TEST(Player, ARelaunchedApplicationKnowsNothingOfItsOldElements) {
  play(opening + "at 1s:\n  relaunch a\nend 10s\n");
  desktop().uptime = scenario::startUptime + 1;
  EXPECT_EQ(read("app:101/x", "AXRole"), "-25202");
}

TEST(Player, TheRunEndsBeforeATimerAtTheScenariosEnd) {
  play("end 10s\n");
  std::vector<double> fired;
  for (const double delay : {9.5, 10.0, 10.5}) {
    platform::afterDelay(
        delay, [&] { fired.push_back(platform::systemUptime() - scenario::startUptime); });
  }
  platform::runLoop();
  EXPECT_EQ(fired, std::vector<double>{9.5});
}

TEST(Player, CallsAreRecordedOnlyOnDemand) {
  play(opening + "end 10s\n");
  (void)platform::accessibilityTrusted();
  EXPECT_TRUE(desktop().calls.empty());
  desktop().recordCalls = true;
  (void)platform::accessibilityTrusted();
  (void)read("app:101/x", "AXTitle");
  EXPECT_EQ(desktop().calls, (std::vector<std::string>{"trusted", "read app:101/x AXTitle"}));
}

TEST(Player, EveryMoveOfTheClockIsTold) {
  play(opening + "slow x 100ms\nend 10s\n");
  std::vector<double> waits;
  desktop().pace = [&](double seconds) { waits.push_back(seconds); };
  (void)read("app:101/x", "AXTitle");
  (void)read("app:101/w", "AXTitle");
  platform::afterDelay(1, [] {});
  platform::runLoop();
  ASSERT_EQ(waits.size(), 2U);
  EXPECT_DOUBLE_EQ(waits[0], 0.1);
  EXPECT_DOUBLE_EQ(waits[1], 1);
}

TEST(PlayerDeathTest, AReadThatTheScenarioDoesNotDefineEndsTheRun) {
  play(opening + "end 10s\n");
  EXPECT_DEATH((void)read("app:101/x", "AXHelp"),
               "nobody wrote down what \"app:101/x\" answers for AXHelp");
  EXPECT_DEATH((void)read("app:101/w", "AXURL"), "\"app:101/w\" answers for AXURL");
}

TEST(Player, ADesktopThatIsNotStrictAnswersThatTheAttributeIsUnsupported) {
  play(opening + "end 10s\n");
  desktop().strict = false;
  EXPECT_EQ(read("app:101/x", "AXHelp"), "-25205");
}

TEST(Player, AnAttributeThatTheScenarioDefinesIsNeverRefused) {
  play(opening + "set x help=\"Presses\"\nend 10s\n");
  EXPECT_EQ(read("app:101/x", "AXHelp"), "Presses");
}

}  // namespace
}  // namespace callmonitor
