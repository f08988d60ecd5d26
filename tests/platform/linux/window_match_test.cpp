#include "platform/linux/window_match.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace callmonitor::platform {
namespace {

using Pairing = std::tuple<std::size_t, std::size_t, bool>;  // frame, window, certain

const Extents left{0, 0, 800, 900};
const Extents right{800, 0, 800, 900};

TEST(NameAgreement, SetsAdditionsAndDirectionMarksAside) {
  struct Case {
    std::string name;
    std::string frame;
    std::string window;
    NameAgreement expected;
  };
  const std::vector<Case> cases{
      {"equal names", "Meet - Chromium", "Meet - Chromium", NameAgreement::equal},
      {"direction marks in the window's name only", "\u05e9 - Chromium",
       "\u202b\u05e9\u202c - Chromium\u200e", NameAgreement::equal},
      {"white space of every kind folded", "Meet\u00a0x - Chromium", "Meet x -\u2003Chromium",
       NameAgreement::equal},
      {"white space folded", "Meet  x - Chromium", " Meet x - Chromium", NameAgreement::equal},
      {"a tab that plays sound", "Meet - Audio playing - Chromium", "Meet - Chromium",
       NameAgreement::withAddition},
      {"two additions", "Meet - Camera recording - Pinned - Chromium", "Meet - Chromium",
       NameAgreement::withAddition},
      {"a title that holds the separator itself", "a - b - Audio playing - Chromium",
       "a - b - Chromium", NameAgreement::withAddition},
      {"a web app's window, whose name is the page's alone", "Meet - Audio playing", "Meet",
       NameAgreement::withAddition},
      {"another page of the same browser", "Mail - Chromium", "Meet - Chromium",
       NameAgreement::none},
      {"an addition is only ever in the accessible name", "Meet - Chromium",
       "Meet - Audio playing - Chromium", NameAgreement::none},
      {"a title that merely begins alike", "Meeting - Chromium", "Meet - Chromium",
       NameAgreement::none},
      {"no accessible name", "", "Meet - Chromium", NameAgreement::none},
      {"no name on either side", "", "", NameAgreement::none},
      {"a name of direction marks only is no name", "\u200e", "\u200e", NameAgreement::none},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(nameAgreement(each.frame, each.window), each.expected) << each.name;
  }
}

TEST(MatchWindows, PairsByNameAndPlace) {
  struct Case {
    std::string name;
    std::vector<MatchCandidate> frames;
    std::vector<MatchCandidate> windows;
    std::vector<Pairing> expected;
  };
  const std::vector<Case> cases{
      {"a browser's nameless extra frames have no window",
       {{"Meet - Chromium", left}, {"", left}, {"", left}},
       {{"Meet - Chromium", left}},
       {{0, 0, true}}},
      {"names decide even where places have moved",
       {{"a", left}, {"b", right}},
       {{"b", left}, {"a", right}},
       {{0, 1, true}, {1, 0, true}}},
      {"places decide between equal names",
       {{"New Tab", right}, {"New Tab", left}},
       {{"New Tab", left}, {"New Tab", right}},
       {{0, 1, true}, {1, 0, true}}},
      {"equal names in the same place are pairs that must not be remembered",
       {{"New Tab", left}, {"New Tab", left}},
       {{"New Tab", left}, {"New Tab", left}},
       {{0, 0, false}, {1, 1, false}}},
      {"equal names without places are pairs that must not be remembered",
       {{"x", std::nullopt}, {"x", std::nullopt}},
       {{"x", left}, {"x", right}},
       {{0, 0, false}, {1, 1, false}}},
      {"an equal name goes before one with an addition",
       {{"Meet - Audio playing - Chromium", left}, {"Meet - Chromium", right}},
       {{"Meet - Chromium", right}, {"Meet - Chromium", left}},
       {{0, 1, true}, {1, 0, true}}},
      {"a lone frame and window in the same place while the title changes, not remembered",
       {{"Meet - Chromium", left}},
       {{"Loading - Chromium", left}},
       {{0, 0, false}}},
      {"a title that changes while another window lies in the same place",
       {{"New - Chromium", left}, {"Other - Chromium", left}},
       {{"Old - Chromium", left}, {"Other - Chromium", left}},
       {{0, 0, false}, {1, 1, true}}},
      {"two titles that change in the same place are left alone",
       {{"New - Chromium", left}, {"Newer - Chromium", left}},
       {{"Old - Chromium", left}, {"Older - Chromium", left}},
       {}},
      {"place alone does not choose between two windows",
       {{"Meet - Chromium", left}},
       {{"a", left}, {"b", left}},
       {}},
      {"another name in another place is no pair", {{"Meet - Chromium", left}}, {{"a", right}}, {}},
      {"an unknown place does not pair other names",
       {{"Meet - Chromium", std::nullopt}},
       {{"a", left}},
       {}},
      {"more frames than windows leaves one over",
       {{"a", left}, {"b", right}},
       {{"b", right}},
       {{1, 0, true}}},
      {"nothing pairs with nothing", {}, {}, {}},
  };
  for (const Case& each : cases) {
    std::vector<Pairing> pairs;
    for (const WindowMatch& match : matchWindows(each.frames, each.windows)) {
      pairs.emplace_back(match.frame, match.window, match.certain);
    }
    EXPECT_EQ(pairs, each.expected) << each.name;
  }
}

TEST(PartnersMissing, DoubtsAListThatLacksAWindowOnBothSides) {
  struct Case {
    std::string name;
    std::vector<MatchCandidate> frames;
    std::vector<MatchCandidate> windows;
    std::vector<WindowMatch> matches;
    bool expected;
  };
  const MatchCandidate one{"a", left};
  const MatchCandidate prompt{"a", left, false};
  const std::vector<Case> cases{
      {"all have partners", {one}, {one}, {{0, 0, true}}, false},
      {"a frame and a window both left over", {one, one}, {one, one}, {{0, 1, true}}, true},
      {"a frame left over without any window", {one, one}, {one}, {{1, 0, true}}, false},
      {"a window left over without any frame", {one}, {one, one}, {{0, 1, false}}, false},
      {"a prompt or an empty frame left over", {one, prompt}, {one, one}, {{0, 0, true}}, false},
      {"a dock left over", {one, one}, {one, prompt}, {{0, 0, true}}, false},
      {"a dock that has the partner does not count for the window",
       {one, one},
       {prompt, one},
       {{0, 0, true}},
       true},
      {"nothing on either side", {}, {}, {}, false},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(partnersMissing(each.frames, each.windows, each.matches), each.expected) << each.name;
  }
}

TEST(NamesMeet, FindsAFrameAndAWindowThatMightBeTheSame) {
  struct Case {
    std::string name;
    std::vector<MatchCandidate> frames;
    std::vector<MatchCandidate> windows;
    bool expected;
  };
  const MatchCandidate call{"Meet - Browser", left};
  const MatchCandidate playing{"Meet - Audio playing - Browser", left};
  const MatchCandidate terminal{"Terminal", left};
  const std::vector<Case> cases{
      {"the same name", {terminal, call}, {call}, true},
      {"a name with an addition", {playing}, {terminal, call}, true},
      {"the same place alone", {call}, {terminal}, false},
      {"two that have no name", {{"", left}}, {{"", left}}, false},
      {"a frame that need not have a window", {{"Meet - Browser", left, false}}, {call}, false},
      {"a window that is a dock", {call}, {{"Meet - Browser", left, false}}, false},
      {"no frame", {}, {call}, false},
      {"no window", {call}, {}, false},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(namesMeet(each.frames, each.windows), each.expected) << each.name;
  }
}

TEST(WithoutDirectionMarks, RemovesEveryMarkAndNothingElse) {
  EXPECT_EQ(
      withoutDirectionMarks(
          "\u200ea\u200fb\u202ac\u202bd\u202ce\u202df\u202eg\u2066h\u2067i\u2068j\u2069k\u061c"),
      "abcdefghijk");
  EXPECT_EQ(withoutDirectionMarks("\u2065\u200d \u05e9"), "\u2065\u200d \u05e9");
}

}  // namespace
}  // namespace callmonitor::platform
