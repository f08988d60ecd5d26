// A scenario's desktop stands as its changes left it, and answers accordingly.
#include "platform/scenario/world.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/scenario/loader.h"
#include "platform/scenario/schedule.h"

namespace callmonitor::scenario {
namespace {

namespace code = platform::code;
using Names = std::vector<std::string>;

// The world of a scenario at one of its seconds.
World worldAt(const std::string& text, double seconds = 0) {
  const Loaded loaded = parseScenario(
      text + "\nend 1h\n", [](const std::string&) { return std::optional<std::string>(); });
  EXPECT_EQ(loaded.error, "");
  World world;
  if (!loaded.scenario) return world;
  for (const Change& change : loaded.scenario->opening) {
    EXPECT_EQ(apply(world, change), std::nullopt);
  }
  Schedule schedule = scheduleOf(*loaded.scenario);
  while (const auto due = takeDue(schedule, *loaded.scenario, seconds)) {
    world.seconds = due->at;
    world.touched.clear();
    for (const Change& change : due->step->changes) EXPECT_EQ(apply(world, change), std::nullopt);
  }
  return world;
}

Answer answerOf(const World& world, const std::string& key, const std::string& attribute) {
  const auto answers = answersOf(world, key);
  const auto found = answers.find(attribute);
  if (found != answers.end()) return found->second;
  ADD_FAILURE() << key << " defines no " << attribute;
  return {};
}

std::string text(const World& world, const std::string& key, const std::string& attribute) {
  const Answer answer = answerOf(world, key, attribute);
  const auto* held = std::get_if<std::string>(&answer.reading.value);
  return held == nullptr ? "(code " + std::to_string(answer.reading.code) + ")" : *held;
}

Names namesIn(const World& world, const std::string& key, const std::string& attribute) {
  Names names;
  const Answer answer = answerOf(world, key, attribute);
  const auto* several = std::get_if<std::vector<Reference>>(&answer.reading.value);
  if (several == nullptr) return {"(none)"};
  for (const Reference& reference : *several) names.push_back(reference.name);
  return names;
}

const std::string opening = R"(
app a b.c
  window w "Title"
    page p https://example.org/
      button x "Press"
      text y "Words"
  window v
)";

TEST(ScenarioWorld, AnElementAnswersWhatItsKindAndItsLineSay) {
  const World world = worldAt(opening);
  EXPECT_EQ(text(world, "app:101/w", "AXRole"), "AXWindow");
  EXPECT_EQ(text(world, "app:101/w", "AXSubrole"), "AXStandardWindow");
  EXPECT_EQ(text(world, "app:101/w", "AXTitle"), "Title");
  EXPECT_EQ(namesIn(world, "app:101/w", "AXChildren"), Names{"app:101/p"});
  EXPECT_EQ(text(world, "app:101/x", "AXTitle"), "Press");
  EXPECT_EQ(text(world, "app:101/y", "AXTitle"), "");
  EXPECT_EQ(text(world, "app:101/y", "AXValue"), "Words");
}

TEST(ScenarioWorld, WhatNobodySaysHasItsUsualAnswerAndNothingElseIsDefined) {
  const World world = worldAt("app a b.c\n  AXGroup g\n");
  const auto answers = answersOf(world, "app:101/g");
  Names names;
  for (const auto& [name, answer] : answers) names.push_back(name);
  EXPECT_EQ(names, (Names{"AXChildren", "AXDescription", "AXEnabled", "AXHidden", "AXRole",
                          "AXRoleDescription", "AXSubrole", "AXTitle", "AXValue"}));
  EXPECT_EQ(answers.at("AXHidden").reading.code, code::attributeUnsupported);
  EXPECT_TRUE(std::get<bool>(answers.at("AXEnabled").reading.value));
  EXPECT_EQ(answers.at("AXSubrole").reading.code, code::noValue);
  EXPECT_EQ(answers.at("AXRoleDescription").reading.code, code::noValue);
  EXPECT_EQ(answers.at("AXValue").reading.code, code::noValue);
  EXPECT_EQ(text(world, "app:101/g", "AXTitle"), "");
  EXPECT_EQ(text(world, "app:101/g", "AXDescription"), "");
  EXPECT_EQ(namesIn(world, "app:101/g", "AXChildren"), Names{});
}

TEST(ScenarioWorld, AnApplicationAnswersItsWindowsAndTheFocusedOne) {
  World world = worldAt(opening);
  EXPECT_EQ(namesIn(world, "app:101", "AXWindows"), (Names{"app:101/w", "app:101/v"}));
  const auto focused = [&] {
    return std::get<Reference>(answerOf(world, "app:101", "AXFocusedWindow").reading.value).name;
  };
  EXPECT_EQ(focused(), "app:101/w") << "the first, unless something else is said";
  world = worldAt(opening + "focus v\n");
  EXPECT_EQ(focused(), "app:101/v");
  world = worldAt(opening + "focus v\nat 1s:\n  close v\n", 1);
  EXPECT_EQ(focused(), "app:101/w");
  world = worldAt("app a b.c\n");
  EXPECT_EQ(answerOf(world, "app:101", "AXFocusedWindow").reading.code, code::noValue);
}

TEST(ScenarioWorld, FailuresAndDelaysAreThoseOfTheAttributeBeforeThoseOfTheElement) {
  const World world = worldAt(opening +
                              "fails x AXTitle failure\nslow x 100ms\nslow x AXRole 50ms\n"
                              "fails y cannot-complete\n");
  EXPECT_EQ(answerOf(world, "app:101/x", "AXTitle").reading.code, code::failure);
  EXPECT_EQ(answerOf(world, "app:101/x", "AXRole").reading.code, code::success);
  EXPECT_DOUBLE_EQ(answerOf(world, "app:101/x", "AXTitle").delay, 0.1);
  EXPECT_DOUBLE_EQ(answerOf(world, "app:101/x", "AXRole").delay, 0.05);
  EXPECT_EQ(answerOf(world, "app:101/y", "AXRole").reading.code, code::cannotComplete);
  EXPECT_EQ(answerOf(world, "app:101/y", "AXValue").reading.code, code::cannotComplete);
}

TEST(ScenarioWorld, WhatWorksAgainNeitherFailsNorIsSlow) {
  const std::string trouble = opening + "fails x AXTitle failure\nslow x 100ms\nslow a 1s\n";
  World world = worldAt(trouble + "at 1s:\n  works x AXTitle\n", 1);
  EXPECT_EQ(answerOf(world, "app:101/x", "AXTitle").reading.code, code::success);
  EXPECT_DOUBLE_EQ(answerOf(world, "app:101/x", "AXTitle").delay, 0.1);
  EXPECT_DOUBLE_EQ(world.applications[0].delay, 1);
  world = worldAt(trouble + "at 1s:\n  works x\n  works a\n", 1);
  EXPECT_DOUBLE_EQ(answerOf(world, "app:101/x", "AXRole").delay, 0);
  EXPECT_DOUBLE_EQ(world.applications[0].delay, 0);
}

TEST(ScenarioWorld, AnElementThatComesBackUnderItsNameIsAnother) {
  const World world = worldAt(opening + "at 1s:\n  replace p\n    page p\n", 1);
  EXPECT_EQ(namesIn(world, "app:101/w", "AXChildren"), Names{"app:101/p~2"});
  EXPECT_FALSE(world.elements.contains("app:101/p"));
  EXPECT_FALSE(world.elements.contains("app:101/x")) << "what stood in it ends with it";
}

TEST(ScenarioWorld, AReplacementStandsWhereItsForerunnerStood) {
  const World world = worldAt(opening + "at 1s:\n  replace w\n    window m\n    window n\n", 1);
  EXPECT_EQ(namesIn(world, "app:101", "AXWindows"), (Names{"app:101/m", "app:101/n", "app:101/v"}));
}

TEST(ScenarioWorld, FillEndsWhatWasThereAndAddDoesNot) {
  World world = worldAt(opening + "at 1s:\n  add p\n    link z\n", 1);
  EXPECT_EQ(namesIn(world, "app:101/p", "AXChildren"),
            (Names{"app:101/x", "app:101/y", "app:101/z"}));
  world = worldAt(opening + "at 1s:\n  fill p\n    link z\n", 1);
  EXPECT_EQ(namesIn(world, "app:101/p", "AXChildren"), Names{"app:101/z"});
  EXPECT_FALSE(world.elements.contains("app:101/x"));
  EXPECT_TRUE(world.elements.contains("app:101/p"));
  world = worldAt(opening + "at 1s:\n  fill p\n", 1);
  EXPECT_EQ(namesIn(world, "app:101/p", "AXChildren"), Names{});
}

TEST(ScenarioWorld, WhatIsDetachedGoesOnExistingAndCanComeBack) {
  World world = worldAt(opening + "at 1s:\n  detach p\nat 2s:\n  move p v\n", 1);
  EXPECT_EQ(namesIn(world, "app:101/w", "AXChildren"), Names{});
  EXPECT_EQ(text(world, "app:101/x", "AXTitle"), "Press");
  world = worldAt(opening + "at 1s:\n  detach p\nat 2s:\n  move p v\n", 2);
  EXPECT_EQ(namesIn(world, "app:101/v", "AXChildren"), Names{"app:101/p"});
}

TEST(ScenarioWorld, SetChangesWhatItNamesAndNothingElse) {
  const World world =
      worldAt(opening + "at 1s:\n  set x \"Go\" disabled\n  set y \"Other words\"\n", 1);
  EXPECT_EQ(text(world, "app:101/x", "AXTitle"), "Go");
  EXPECT_FALSE(std::get<bool>(answerOf(world, "app:101/x", "AXEnabled").reading.value));
  EXPECT_EQ(text(world, "app:101/x", "AXRole"), "AXButton");
  EXPECT_EQ(text(world, "app:101/y", "AXValue"), "Other words");
}

TEST(ScenarioWorld, NamesInValuesMeanTheElementOfTheMoment) {
  const World world =
      worldAt(opening +
                  "set a AXFocusedWindow=element:v\nat 1s:\n  replace v\n    window v\n"
                  "  set a AXMainWindow=element:v\n",
              1);
  const Answer answer = answerOf(world, "app:101", "AXMainWindow");
  EXPECT_EQ(std::get<Reference>(answer.reading.value).name, "app:101/v~2");
}

TEST(ScenarioWorld, AnApplicationThatQuitsEndsWithAllItsElements) {
  const World world = worldAt(opening + "front a\nat 1s:\n  detach p\n  quit a\n", 1);
  EXPECT_TRUE(world.applications.empty());
  EXPECT_TRUE(world.elements.empty());
  EXPECT_TRUE(world.keys.empty());
  EXPECT_EQ(frontOf(world), nullptr);
}

TEST(ScenarioWorld, ARelaunchIsAnotherLaunchOfTheSameApplication) {
  const World world =
      worldAt(opening + "app z z.z\nfront a\nat 5s:\n  relaunch a\n    window w \"New\"\n", 5);
  ASSERT_EQ(world.applications.size(), 2U);
  const platform::Application& application = world.applications[0].application;
  EXPECT_EQ(application.pid, 101);
  EXPECT_EQ(application.bundleIdentifier, "b.c");
  EXPECT_EQ(application.launchedAt, startWallClock + 5);
  EXPECT_EQ(namesIn(world, "app:101", "AXWindows"), Names{"app:101/w~2"});
  EXPECT_EQ(frontOf(world), &world.applications[0]);
}

TEST(ScenarioWorld, ApplicationsGetTheirFactsWhereTheirLineIsSilent) {
  const World world = worldAt("app a b.c\napp d e.f pid=7\napp g none\nat 9s:\n  app h i.j\n", 9);
  ASSERT_EQ(world.applications.size(), 4U);
  EXPECT_EQ(world.applications[0].application.pid, 101);
  EXPECT_EQ(world.applications[0].application.launchedAt, startWallClock - runningSince);
  EXPECT_EQ(world.applications[1].application.pid, 7);
  EXPECT_EQ(world.applications[2].application.pid, 102);
  EXPECT_FALSE(world.applications[2].application.bundleIdentifier.has_value());
  EXPECT_EQ(world.applications[3].application.launchedAt, startWallClock + 9);
}

TEST(ScenarioWorld, TheScreenShowsTheWindowsUnlessItIsWrittenDown) {
  World world =
      worldAt(opening + "app b d.e\n  window u \"Other\" number=70\n  window t offscreen\n");
  auto screen = screenOf(world);
  ASSERT_TRUE(screen.has_value());
  ASSERT_EQ(screen->size(), 3U);
  EXPECT_EQ(screen->at(0).ownerPid, 101);
  EXPECT_EQ(screen->at(0).name, "Title");
  EXPECT_EQ(screen->at(0).layer, 0);
  EXPECT_EQ(screen->at(0).number, 1);
  EXPECT_EQ(screen->at(1).number, 2);
  EXPECT_EQ(screen->at(2).number, 70);
  world = worldAt(opening + "screen\n  entry a \"Other\" layer=3 number=9\n  entry\n");
  screen = screenOf(world);
  ASSERT_TRUE(screen.has_value());
  ASSERT_EQ(screen->size(), 2U);
  EXPECT_EQ(screen->at(0).ownerPid, 101);
  EXPECT_EQ(screen->at(0).layer, 3);
  EXPECT_FALSE(screen->at(1).ownerPid.has_value());
  EXPECT_FALSE(screen->at(1).number.has_value());
  EXPECT_FALSE(screenOf(worldAt(opening + "screen absent\n")).has_value());
  EXPECT_TRUE(
      screenOf(worldAt(opening + "screen absent\nat 1s:\n  screen derived\n", 1)).has_value());
}

TEST(ScenarioWorld, AudioIsAbsentUntilSomethingIsSaidOfIt) {
  EXPECT_FALSE(worldAt(opening).audio.has_value());
  World world = worldAt("audio none\n");
  EXPECT_TRUE(world.audio.has_value() && world.audio->empty());
  world = worldAt(opening + "audio a in\naudio x.y out\nat 1s:\n  audio a in out\n", 1);
  ASSERT_TRUE(world.audio.has_value());
  ASSERT_EQ(world.audio->size(), 2U);
  EXPECT_EQ(world.audio->at(0).bundle, "b.c") << "an application stands for its bundle";
  EXPECT_TRUE(world.audio->at(0).input && world.audio->at(0).output);
  EXPECT_TRUE(!world.audio->at(1).input && world.audio->at(1).output);
  world = worldAt("audio x.y in\nat 1s:\n  audio x.y gone\n", 1);
  EXPECT_TRUE(world.audio.has_value() && world.audio->empty());
  EXPECT_FALSE(worldAt("audio x.y in\nat 1s:\n  audio absent\n", 1).audio.has_value());
}

TEST(ScenarioWorld, AChangeTouchesWhatItChangesOnly) {
  const World world = worldAt(opening + "at 1s:\n  set x \"Go\"\n", 1);
  EXPECT_EQ(world.touched, std::set<std::string>{"app:101/x"});
}

}  // namespace
}  // namespace callmonitor::scenario
