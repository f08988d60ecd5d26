// A scenario file says what its form promises, and says nothing that cannot happen.
#include "platform/scenario/loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::scenario {
namespace {

namespace code = platform::code;

std::optional<std::string> noFile(const std::string& /*name*/) {
  return std::nullopt;
}

Scenario load(const std::string& text) {
  Loaded loaded = parseScenario(text + "\nend 1h\n", noFile);
  EXPECT_EQ(loaded.error, "");
  EXPECT_TRUE(loaded.scenario.has_value());
  return loaded.scenario.value_or(Scenario());
}

// The one element of an application's one window.
ElementDescription element(const std::string& line, const std::string& before = "") {
  const Scenario scenario = load(before + "\napp a b.c\n  window w\n    " + line + "\n");
  const auto& windows = scenario.opening.back().element.children;
  if (windows.size() != 1 || windows[0].children.size() != 1) {
    ADD_FAILURE() << "not one element: " << line;
    return {};
  }
  return windows[0].children[0];
}

std::string text(const Value& value) {
  const auto* held = std::get_if<std::string>(&value);
  return held == nullptr ? "(no text)" : *held;
}

TEST(ScenarioElements, AreAKindANameATextAndWords) {
  const ElementDescription read = element(
      R"(button leave "Leave call" description="now" role-description=knob disabled hidden)");
  EXPECT_EQ(read.kind, "button");
  EXPECT_EQ(read.name, "leave");
  EXPECT_EQ(read.text, "Leave call");
  EXPECT_EQ(text(read.attributes.at("AXDescription")), "now");
  EXPECT_EQ(text(read.attributes.at("AXRoleDescription")), "knob");
  EXPECT_FALSE(std::get<bool>(read.attributes.at("AXEnabled")));
  EXPECT_TRUE(std::get<bool>(read.attributes.at("AXHidden")));
}

TEST(ScenarioElements, NeedNeitherNameNorText) {
  const ElementDescription read = element("AXGroup");
  EXPECT_EQ(read.kind, "AXGroup");
  EXPECT_EQ(read.name, "");
  EXPECT_FALSE(read.text.has_value());
}

TEST(ScenarioElements, EachWordForAnAttributeMeansOne) {
  const std::vector<std::pair<std::string, std::string>> words{
      {"title", "AXTitle"},           {"description", "AXDescription"},
      {"value", "AXValue"},           {"role", "AXRole"},
      {"subrole", "AXSubrole"},       {"role-description", "AXRoleDescription"},
      {"identifier", "AXIdentifier"}, {"help", "AXHelp"},
      {"url-text", "AXURL"},          {"AXAnything", "AXAnything"}};
  for (const auto& [word, attribute] : words) {
    SCOPED_TRACE(word);
    EXPECT_EQ(text(element("group " + word + "=\"some text\"").attributes.at(attribute)),
              "some text");
  }
}

TEST(ScenarioElements, BareValuesMayBeOfOtherTypesAndQuotedOnesAreTexts) {
  const auto value = [](const std::string& word) {
    return element("group value=" + word).attributes.at("AXValue");
  };
  EXPECT_TRUE(std::get<bool>(value("true")));
  EXPECT_FALSE(std::get<bool>(value("false")));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(value("none")));
  EXPECT_TRUE(std::holds_alternative<platform::OtherType>(value("other")));
  EXPECT_EQ(std::get<Reference>(value("element:w")).name, "w");
  const auto several = std::get<std::vector<Reference>>(value("elements:w,v"));
  ASSERT_EQ(several.size(), 2U);
  EXPECT_EQ(several[1].name, "v");
  EXPECT_EQ(std::get<platform::Address>(value("address:https://example.org/")).text,
            "https://example.org/");
  EXPECT_EQ(text(value("word")), "word");
  EXPECT_EQ(text(value("\"true\"")), "true");
  EXPECT_EQ(text(value("\"\"")), "");
}

TEST(ScenarioElements, ABareAddressIsThePagesAddressWithAllThatAddressesHold) {
  const ElementDescription read = element("page p https://zoom.us/j/1?pwd=A&b=c#success \"Zoom\"");
  EXPECT_EQ(std::get<platform::Address>(read.attributes.at("AXURL")).text,
            "https://zoom.us/j/1?pwd=A&b=c#success");
  EXPECT_EQ(read.text, "Zoom");
  EXPECT_EQ(read.name, "p");
  EXPECT_EQ(std::get<platform::Address>(element("page url=\"\"").attributes.at("AXURL")).text, "");
}

TEST(ScenarioElements, FailuresAndDelaysStandBelow) {
  const ElementDescription read = element(
      "button\n      fails AXTitle -25204\n      fails failure\n      slow AXRole 150ms\n"
      "      slow 2s");
  EXPECT_EQ(read.errors.at("AXTitle"), code::cannotComplete);
  EXPECT_EQ(read.errors.at(""), code::failure);
  EXPECT_DOUBLE_EQ(read.delays.at("AXRole"), 0.15);
  EXPECT_DOUBLE_EQ(read.delays.at(""), 2);
}

TEST(ScenarioElements, FailureCodesMayBeWords) {
  const std::vector<std::pair<std::string, std::int32_t>> words{{"failure", -25200},
                                                                {"illegal-argument", -25201},
                                                                {"invalid-element", -25202},
                                                                {"cannot-complete", -25204},
                                                                {"unsupported", -25205},
                                                                {"no-value", -25212},
                                                                {"-1", -1},
                                                                {"7", 7}};
  for (const auto& [word, meaning] : words) {
    EXPECT_EQ(element("button\n      fails " + word).errors.at(""), meaning) << word;
  }
}

TEST(ScenarioElements, QuotesHoldEveryCharacter) {
  EXPECT_EQ(element(R"(button "a \"b\" \\ # \{c} \n\t \u{2019}\u{1F600}")").text,
            "a \"b\" \\ # {c} \n\t ’😀");
}

TEST(ScenarioElements, WindowsMayHaveANumberAndStayOffTheScreen) {
  const Scenario scenario = load("app a b.c\n  window w number=77 offscreen\n");
  const ElementDescription& window = scenario.opening[0].element.children[0];
  EXPECT_EQ(window.number, 77);
  EXPECT_EQ(window.onScreen, false);
}

TEST(ScenarioFragments, StandWhereTheyAreUsedWithTheirValues) {
  const ElementDescription read =
      element("group\n      use pair on \"a b\"\n",
              "define pair state name\n  button \"Turn {state}\"\n  group\n    text \"{name}\"\n");
  ASSERT_EQ(read.children.size(), 2U);
  EXPECT_EQ(read.children[0].text, "Turn on");
  EXPECT_EQ(read.children[1].children[0].text, "a b");
}

TEST(ScenarioFragments, MayUseOthersAndHoldChanges) {
  const Scenario scenario = load(
      "define inner\n  button \"x\"\ndefine outer\n  use inner\n  use inner\n"
      "define silence\n  audio none\n  trust no\n"
      "app a b.c\n  window w\n    use outer\nat 1s:\n  use silence\n");
  EXPECT_EQ(scenario.opening[0].element.children[0].children.size(), 2U);
  ASSERT_EQ(scenario.steps.size(), 1U);
  EXPECT_EQ(scenario.steps[0].changes.size(), 2U);
}

TEST(ScenarioFragments, LinesMayBeRepeatedWithTheirNumber) {
  const Scenario scenario = load("app a b.c\n  repeat 30\n    window w{n} \"News {n}\"\n");
  const auto& windows = scenario.opening[0].element.children;
  ASSERT_EQ(windows.size(), 30U);
  EXPECT_EQ(windows[29].name, "w30");
  EXPECT_EQ(windows[29].text, "News 30");
}

TEST(ScenarioFragments, ComeFromIncludedFilesOnce) {
  const auto read = [](const std::string& name) {
    return name == "shared/x" ? std::optional<std::string>("define x\n  button\n") : std::nullopt;
  };
  const Loaded loaded = parseScenario(
      "include shared/x\ninclude shared/x\napp a b.c\n  window w\n    use x\nend 1s\n", read);
  EXPECT_EQ(loaded.error, "");
}

TEST(ScenarioFile, SaysWhyAndWhenItEnds) {
  const Loaded loaded = parseScenario("why \"Because.\"  # a comment\n\n# another\nend 2m", noFile);
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  EXPECT_EQ(loaded.scenario->why, "Because.");
  EXPECT_DOUBLE_EQ(loaded.scenario->end, 120);
}

TEST(ScenarioFile, MayHaveWindowsLineEnds) {
  EXPECT_TRUE(parseScenario("trust no\r\nend 2s\r\n", noFile).scenario.has_value());
}

TEST(ScenarioApplications, HaveTheFactsThatTheirLineGives) {
  const Scenario scenario = load(
      "app a b.c pid=42 launched=12.5 accessory\napp d none launched=absent\napp e \"odd id\"");
  const ApplicationDescription& a = scenario.opening[0].application;
  EXPECT_EQ(a.pid, 42);
  EXPECT_EQ(a.bundle, "b.c");
  EXPECT_EQ(a.launchedAt, 12.5);
  EXPECT_FALSE(a.regular);
  const ApplicationDescription& d = scenario.opening[1].application;
  EXPECT_TRUE(d.withoutBundle);
  EXPECT_TRUE(d.withoutLaunchTime);
  EXPECT_TRUE(d.regular);
  EXPECT_EQ(scenario.opening[2].application.bundle, "odd id");
}

TEST(ScenarioSteps, HappenAtTheirTimesOnceOrRepeatedly) {
  const Scenario scenario = load(
      "at 3.5s:\n  trust no\nat 1m every 500ms until 2m:\n  trust no\nat 1s every 2s:\n"
      "  trust yes\n");
  ASSERT_EQ(scenario.steps.size(), 3U);
  EXPECT_DOUBLE_EQ(scenario.steps[0].at, 3.5);
  EXPECT_FALSE(scenario.steps[0].every.has_value());
  EXPECT_DOUBLE_EQ(scenario.steps[1].at, 60);
  EXPECT_DOUBLE_EQ(scenario.steps[1].every.value(), 0.5);
  EXPECT_DOUBLE_EQ(scenario.steps[1].until, 120);
  EXPECT_DOUBLE_EQ(scenario.steps[2].until, 3600) << "to the end, where nothing else is said";
}

struct Refused {
  std::string_view sentence;
  std::string text;
  std::string error;
};

const std::string opening = "app a b.c\n  window w\n    button x\n";

TEST(ScenarioErrors, NameTheLineAndTheReason) {
  const std::vector<Refused> rows{
      {"an open quote", "end 1s\nwhy \"open", "line 2: a quote is not closed"},
      {"an unknown escape", "why \"\\q\"", "line 1: unknown escape \\q"},
      {"a wrong character number", "why \"\\u{D800}\"", "line 1: there is no such character"},
      {"no character number", "why \"\\u20\"",
       "line 1: \\u is followed by a hexadecimal number in braces: \\u{2019}"},
      {"text right after a quote", "why \"a\"b", "line 1: a blank is missing after a quote"},
      {"a tab", "app a b.c\n\twindow w", "line 2: lines are indented with blanks, not with tabs"},
      {"an indented start", "  end 1s", "line 1: the first line is indented"},
      {"an odd indentation", "app a b.c\n    window w\n  window v",
       "line 3: the indentation fits no line above"},
      {"a line without a verb", "\"text\"",
       "line 1: a line begins with a word that says what it is"},
      {"an unknown word", "end 1s\nexplode w", "line 2: \"explode\" is not known here"},
      {"lines below a line of its own", "trust no\n  button",
       "line 2: nothing may stand below trust"},
      {"lines below the end", "end 1s\n  button", "line 2: nothing may stand below end"},
      {"no end", "trust no", "the scenario has no end (for example: end 10s)"},
      {"an end that is no time", "end soon", "line 1: end when? (for example: end 10s)"},
      {"a second end", "end 1s\nend 2s", "line 2: the end was said above"},
      {"a second why", "why \"a\"\nwhy \"b\"", "line 2: why was said above"},
      {"an empty why", "why \"\"", "line 1: write: why \"ONE SENTENCE\""},
      {"an unknown element", opening + "  pigeon", "line 4: \"pigeon\" is no kind of element"},
      {"an application as an element", opening + "  application",
       "line 4: \"application\" is no kind of element"},
      {"an unknown attribute", opening + "  button colour=red",
       "line 4: unknown attribute \"colour\""},
      {"two texts", opening + "  button \"a\" \"b\"", "line 4: an element has one text only"},
      {"two names", opening + "  button c d", "line 4: \"d\" means nothing here"},
      {"a bad window number", opening + "  window number=x", "line 4: a window number is a number"},
      {"a failure of success", opening + "    fails AXRole 0", "line 4: \"0\" is no failure code"},
      {"a delay without a unit", opening + "    slow AXRole 3", "line 4: \"3\" is no duration"},
      {"a failure of nothing", opening + "    fails", "line 4: write: fails [ATTRIBUTE] CODE"},
      {"an unknown fragment", opening + "  use y", "line 4: \"y\" is not defined above"},
      {"too few values", "define y a b\n  button\napp a b.c\n  use y 1",
       "line 4: \"y\" takes 2 values"},
      {"an unknown placeholder", opening + "  button \"{who}\"",
       "line 4: nothing stands for {who}"},
      {"a fragment that uses itself", "define y\n  use y\napp a b.c\n  use y",
       "line 2: \"y\" uses itself"},
      {"a second definition", "define y\n  button\ndefine y\n  button",
       "line 3: \"y\" is defined above"},
      {"an empty definition", "define y", "line 1: nothing stands below the definition"},
      {"no repetitions", opening + "  repeat 0\n    button", "line 4: repeat how many times?"},
      {"an empty repetition", opening + "  repeat 3", "line 4: repeat what?"},
      {"a missing file", "include y", "line 1: \"y\" cannot be read"},
      {"an application without a bundle", "app a", "line 1: write: app NAME BUNDLE"},
      {"a process id of 0", "app a b.c pid=0", "line 1: \"0\" is no process id"},
      {"a launch time that is none", "app a b.c launched=noon",
       "line 1: a launch time is absent or in seconds since 1970"},
      {"a launch time with two points", "app a b.c launched=1.2.3",
       "line 1: a launch time is absent or in seconds since 1970"},
      {"a launch time of a point alone", "app a b.c launched=.",
       "line 1: a launch time is absent or in seconds since 1970"},
      {"a launch time in words of the C library", "app a b.c launched=0x10",
       "line 1: a launch time is absent or in seconds since 1970"},
      {"half a trust", "trust maybe", "line 1: write: trust yes, or: trust no"},
      {"an audio direction", "audio b.c up", "line 1: \"up\" is neither in, out nor gone"},
      {"a screen that is none", "screen big",
       "line 1: write: screen absent, screen derived, or entries below screen"},
      {"a step without a time", "at noon:\n  trust no", "line 1: \"noon\" is no time"},
      {"a step without a colon", "at 1s\n  trust no",
       "line 1: write: at 3.5s: or: at 10s every 60s until 5m:"},
      {"an empty step", "at 1s:", "line 1: nothing happens then"},
      {"a step that takes no time", "at 1s every 0s:\n  trust no",
       "line 1: a step that repeats takes its time"},
      {"a step that repeats faster than anything happens", "at 1h every 0.01ms:\n  trust no",
       "line 1: a step that repeats takes its time"},
      {"a replacement by nothing", opening + "at 1s:\n  replace x",
       "line 5: nothing stands below replace"},
      {"failures below fill", opening + "at 1s:\n  fill x\n    fails failure",
       "line 5: only elements stand below fill"}};
  for (const Refused& row : rows) {
    SCOPED_TRACE(row.sentence);
    const Loaded loaded = parseScenario(row.text, noFile);
    EXPECT_EQ(loaded.error, row.error);
    EXPECT_FALSE(loaded.scenario.has_value());
  }
}

TEST(ScenarioErrors, WhatCannotHappenIsFoundBeforeItIsPlayed) {
  const std::vector<Refused> rows{
      {"nobody of this name", "front nobody", "line 4: no application is called \"nobody\" then"},
      {"a closed element", "at 1s:\n  close x\nat 2s:\n  set x \"y\"",
       "line 7: nothing is called \"x\" then"},
      {"order is that of time", "at 2s:\n  set x \"y\"\nat 1s:\n  close x",
       "line 5: nothing is called \"x\" then"},
      {"the children of a closed element", "at 1s:\n  close w\nat 2s:\n  set x \"y\"",
       "line 7: nothing is called \"x\" then"},
      {"a second element of a name", "at 1s:\n  add w\n    button x",
       "line 5: there is another \"x\" then"},
      {"a second application of a name", "app a d.e", "line 4: there is another \"a\" then"},
      {"a second process of an id", "app b d.e pid=101",
       "line 4: another application has the process id 101"},
      {"a quit application", "at 1s:\n  quit a\nat 2s:\n  relaunch a",
       "line 7: no application is called \"a\" then"},
      {"an application that is closed", "at 1s:\n  close a", "line 5: \"a\" is an application"},
      {"a focus on an application", "focus a", "line 4: \"a\" is no window"},
      {"a focus on a button", "focus x", "line 4: \"x\" is no window"},
      {"more processes than there are ids", "app b b.c pid=2147483647\napp d b.c",
       "line 5: there is no further process id"},
      {"a replacement outside the tree", "at 1s:\n  detach w\n  replace w\n    window",
       "line 6: \"w\" stands nowhere then"},
      {"a move into itself", "at 1s:\n  move w x", "line 5: \"w\" cannot move into itself"},
      {"a move to another application", "app b d.e\n  window v\nat 1s:\n  move x v",
       "line 7: \"v\" belongs to another application"},
      {"audio of nobody", "audio somebody in",
       "line 4: \"somebody\" is neither an application nor a bundle identifier"},
      {"audio that went", "audio b.c gone", "line 4: \"b.c\" has no audio process then"},
      {"a window of nobody", "screen\n  entry nobody \"x\"",
       "line 4: no application is called \"nobody\" then"},
      {"a step that repeats once too often", "at 1s every 1s until 2s:\n  close x",
       "line 5: nothing is called \"x\" then"},
      {"a step after the end", "at 10s:\n  trust no",
       "line 4: this never happens, the scenario ends before"}};
  for (const Refused& row : rows) {
    SCOPED_TRACE(row.sentence);
    const Loaded loaded = parseScenario(opening + row.text + "\nend 10s\n", noFile);
    EXPECT_EQ(loaded.error, row.error);
    EXPECT_FALSE(loaded.scenario.has_value());
  }
}

TEST(ScenarioErrors, InIncludedFilesNameTheFile) {
  const auto read = [](const std::string& /*name*/) {
    return std::optional<std::string>("define x\n  pigeon\n  \"y\"\n");
  };
  EXPECT_EQ(parseScenario("include shared/x\nend 1s", read).error,
            "shared/x line 3: a line begins with a word that says what it is");
}

TEST(ScenarioErrors, AFileThatCannotBeReadIsOne) {
  EXPECT_EQ(loadScenario("no such file").error, "the file cannot be read");
}

}  // namespace
}  // namespace callmonitor::scenario
