// The label rules against a second implementation of them, over labels and screens by the hundred
// thousand. A disagreement prints the input that brought it about.
#include <gtest/gtest.h>

#include <array>
#include <map>

#include "evidence/call_state.h"
#include "evidence/label_rules.h"
#include "oracle/label_generator.h"
#include "oracle/naive_labels.h"
#include "oracle/naive_text.h"

namespace callmonitor {
namespace {

using oracle::Draw;
using oracle::printable;
using oracle::Rule;
using oracle::Screen;

constexpr unsigned seed = 20240607;
constexpr int inputs = 100'000;
// Both sides of every rule are met at least this often; a generator that drifts away from a rule
// would agree about nothing.
constexpr int enough = 500;

struct NamedPattern {
  Rule rule;
  const char* name;
  const Pattern* pattern;
};

constexpr std::array patterns{
    NamedPattern{Rule::chatContent, "chatContent", &chatContentPattern},
    NamedPattern{Rule::reconnecting, "reconnecting", &reconnectingPattern},
    NamedPattern{Rule::zoomTile, "zoomTile", &zoomTilePattern},
    NamedPattern{Rule::lobbyAudio, "lobbyAudio", &lobbyAudioPattern},
    NamedPattern{Rule::lobbyVideo, "lobbyVideo", &lobbyVideoPattern},
    NamedPattern{Rule::joinControl, "joinControl", &joinControlPattern},
    NamedPattern{Rule::leaveControl, "leaveControl", &leaveControlPattern},
    NamedPattern{Rule::leftNotice, "leftNotice", &leftNoticePattern},
    NamedPattern{Rule::hostEnded, "hostEnded", &hostEndedPattern},
    NamedPattern{Rule::endedForEveryone, "endedForEveryone", &endedForEveryonePattern},
    NamedPattern{Rule::shortcutSuffix, "shortcutSuffix", &shortcutSuffixPattern},
    NamedPattern{Rule::muteControl, "muteControl", &muteControlPattern},
    NamedPattern{Rule::unmuteControl, "unmuteControl", &unmuteControlPattern},
    NamedPattern{Rule::stopVideo, "stopVideo", &stopVideoPattern},
    NamedPattern{Rule::startVideo, "startVideo", &startVideoPattern},
    NamedPattern{Rule::joinExact, "joinExact", &joinExactPattern},
};
static_assert(patterns.size() == static_cast<std::size_t>(Rule::count));

// How often each answer of each rule came up.
class Tally {
 public:
  void count(const std::string& rule, const std::string& answer) { ++met_[rule][answer]; }
  void count(const std::string& rule, bool answer) {
    count(rule, std::string(answer ? "yes" : "no"));
  }

  // Every rule gave this many different answers, each often enough.
  void expectAnswers(const std::string& rule, std::size_t answers) const {
    const auto found = met_.find(rule);
    ASSERT_NE(found, met_.end()) << rule;
    EXPECT_EQ(found->second.size(), answers) << rule;
    for (const auto& [answer, times] : found->second) {
      EXPECT_GE(times, enough) << rule << ": " << answer;
    }
  }

 private:
  std::map<std::string, std::map<std::string, int>> met_;
};

std::string described(const Screen& screen) {
  std::string text = "provider \"" + screen.provider + "\"";
  for (const std::string& control : screen.controls) {
    text += "\n  control \"" + printable(control) + "\"";
  }
  for (const std::string& notice : screen.notices) {
    text += "\n  notice \"" + printable(notice) + "\"";
  }
  return text + (screen.tile ? "\n  tile" : "") + (screen.complete ? "" : "\n  incomplete");
}

TEST(LabelRules, AgreeWithAPlainImplementationAboutEveryPattern) {
  Draw draw(seed);
  Tally tally;
  for (int i = 0; i < inputs && !HasFailure(); ++i) {
    const std::string label = oracle::anyLabel(draw);
    const auto input = [&] { return " of \"" + printable(label) + "\""; };
    const std::string text = oracle::normalized(label);
    EXPECT_EQ(normalized(label), text) << input();
    for (const NamedPattern& row : patterns) {
      const bool expected = oracle::found(row.rule, text);
      EXPECT_EQ(matches(text, *row.pattern), expected) << row.name << input();
      tally.count(row.name, expected);
    }
    const std::string stripped = oracle::withoutShortcut(text);
    EXPECT_EQ(shortcutSuffixPattern.removedFrom(text), stripped) << input();
    // The media rule asks about labels without their shortcuts.
    for (const NamedPattern& row : patterns) {
      EXPECT_EQ(matches(stripped, *row.pattern), oracle::found(row.rule, stripped))
          << row.name << input();
    }
  }
  if (HasFailure()) return;
  for (const NamedPattern& row : patterns) tally.expectAnswers(row.name, 2);
}

TEST(LabelRules, AgreeWithAPlainImplementationAboutWhatIsExcludedAndWhatIsANotice) {
  constexpr std::array roles{"AXStaticText", "AXStaticText", "AXStaticText", "AXStaticText",
                             "AXStaticText", "AXStaticText", "AXGroup",      "AXButton",
                             "AXTextArea",   "AXTextField",  "AXList",       "AXTable",
                             "AXOutline",    "AXBlockQuote", "AXLists",      "axlist",
                             "AXText",       "AXHeading",    "AXRow",        ""};
  constexpr std::array subroles{"",
                                "",
                                "",
                                "AXApplicationLog",
                                "AXApplicationFeed",
                                "AXApplicationLogs",
                                "axapplicationlog",
                                "AXLandmarkMain"};
  Draw draw(seed + 1);
  Tally tally;
  for (int i = 0; i < inputs && !HasFailure(); ++i) {
    const std::string role = draw.from(roles);
    const std::string subrole = draw.from(subroles);
    const std::string title = draw.oneIn(3) ? "" : oracle::anyLabel(draw);
    const std::string description = draw.oneIn(3) ? "" : oracle::anyNotice(draw);
    const auto input = [&] {
      std::string text = role;
      text.append("/").append(subrole).append(" title \"").append(printable(title));
      return text.append("\" description \"").append(printable(description)).append("\"");
    };
    std::string label = title;
    label.append(" ").append(description);

    const bool excluded = oracle::excludedContent(role, subrole, label);
    EXPECT_EQ(excludedContent(role, subrole, label), excluded) << input();
    tally.count("excluded", excluded);
    const bool byLabel = oracle::excludedContent("AXGroup", "", label);
    EXPECT_EQ(excludedContent("AXGroup", "", label), byLabel) << input();
    tally.count("excluded by its label", byLabel);
    const bool notice = oracle::teamsPostCallNotice(description);
    EXPECT_EQ(teamsPostCallNotice(description), notice) << input();
    tally.count("notice", notice);
    const bool leaf = oracle::providerNoticeLeaf(role, subrole, title, description);
    EXPECT_EQ(providerNoticeLeaf(role, subrole, title, description), leaf) << input();
    tally.count("leaf", leaf);
  }
  if (HasFailure()) return;
  for (const char* rule : {"excluded", "excluded by its label", "notice", "leaf"}) {
    tally.expectAnswers(rule, 2);
  }
}

TEST(LabelRules, AgreeWithAPlainImplementationAboutEveryScreen) {
  Draw draw(seed + 2);
  Tally tally;
  for (int i = 0; i < inputs && !HasFailure(); ++i) {
    const Screen screen = oracle::anyScreen(draw);
    const auto& [provider, controls, notices, tile, complete] = screen;

    const std::string state = oracle::callState(controls, notices, provider);
    EXPECT_EQ(stateWord(callState(controls, notices, provider)), state) << described(screen);
    tally.count("state of " + provider, state);
    Evidence evidence;
    evidence.controls = controls;
    evidence.notices = notices;
    evidence.nativeZoomTile = tile;
    evidence.complete = complete;
    const std::string shown = oracle::evidenceState(screen);
    EXPECT_EQ(stateWord(evidence.state(provider)), shown) << described(screen);
    tally.count("evidence", shown);
    const bool lobby = oracle::meetingLobby(controls, provider);
    EXPECT_EQ(meetingLobby(controls, provider), lobby) << described(screen);
    tally.count("lobby of " + provider, lobby);
    const bool media = oracle::mediaActive(controls);
    EXPECT_EQ(mediaActive(controls), media) << described(screen);
    tally.count("media", media);
  }
  if (HasFailure()) return;
  for (const std::string provider : {"zoom", "meet", "teams", "webex"}) {
    tally.expectAnswers("state of " + provider, 3);
    tally.expectAnswers("lobby of " + provider, 2);
  }
  tally.expectAnswers("evidence", 3);
  tally.expectAnswers("media", 2);
}

}  // namespace
}  // namespace callmonitor
