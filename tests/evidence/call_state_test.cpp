// In the call, out of it, or undecided: every rule and the order in which they speak.
#include "evidence/call_state.h"

#include <gtest/gtest.h>

#include <ostream>

namespace callmonitor {

// Prints a state by its word.
static void PrintTo(CallState state, std::ostream* out) {
  *out << stateWord(state);
}

namespace {

using enum CallState;
using Labels = std::vector<std::string>;

const std::vector<std::string_view> everyProvider{"zoom",        "meet",     "teams", "webex",
                                                  "application", "facetime", ""};
const std::vector<std::string_view> trusted{"zoom", "meet", "teams"};
const std::vector<std::string_view> others{"webex", "application", "facetime", "", "Zoom", "MEET"};

struct StateCase {
  std::string_view sentence;
  std::vector<std::string_view> providers;
  Labels controls;
  Labels notices;
  CallState state;
};

// `Evidence::state` has to agree wherever the evidence is complete and shows no tile.
void expectStates(const std::vector<StateCase>& cases) {
  for (const StateCase& row : cases) {
    for (const std::string_view provider : row.providers) {
      SCOPED_TRACE(std::string(row.sentence) + ", provider \"" + std::string(provider) + "\"");
      EXPECT_EQ(callState(row.controls, row.notices, provider), row.state);
      Evidence evidence;
      evidence.controls = row.controls;
      evidence.notices = row.notices;
      EXPECT_EQ(evidence.state(provider), row.state);
      evidence.complete = false;
      EXPECT_EQ(evidence.state(provider), unknown) << "incomplete evidence decides nothing";
    }
  }
}

TEST(CallState, HasAWord) {
  EXPECT_EQ(stateWord(joined), "joined");
  EXPECT_EQ(stateWord(left), "left");
  EXPECT_EQ(stateWord(unknown), "unknown");
}

TEST(CallState, IsJoinedByALeaveControlBesideAMicrophone) {
  const Labels meet{"Leave call", "Mute microphone"};
  expectStates({
      {"leave and mute", everyProvider, meet, {}, joined},
      {"disconnect and mute", everyProvider, {"Disconnect", "Mute microphone"}, {}, joined},
      {"shortcuts",
       everyProvider,
       {"Leave call (⌘ + W)", "Turn off microphone (⌘ + D)"},
       {},
       joined},
      {"the word within a longer label",
       everyProvider,
       {"Hang up", "Audio, turn on, currently muted"},
       {},
       joined},
      {"white space and capitals", everyProvider, {"  LEAVE  call ", "MICROPHONE"}, {}, joined},
      {"in any order", everyProvider, {"Unmute", "x", "End"}, {}, joined},
      {"a microphone without a way out", everyProvider, {"Play", "Microphone"}, {}, unknown},
      {"a way out without a microphone", everyProvider, {"Leave call", "Camera"}, {}, unknown},
      {"a join button is not a way out", everyProvider, {"Join now", "Microphone"}, {}, unknown},
      {"a mic is not the word", everyProvider, {"Leave", "Turn off mic"}, {}, unknown},
      {"nothing", everyProvider, {}, {}, unknown},
      {"empty labels", everyProvider, {"", ""}, {""}, unknown},
      {"one control cannot say both", everyProvider, {"Leave the muted call"}, {}, unknown},
  });
}

TEST(CallState, IsJoinedWhateverTheNoticesSay) {
  const Labels meet{"Leave call", "Mute microphone"};
  for (const std::string notice :
       {"Reconnecting...", "You left the meeting", "The host has ended this meeting.",
        "Your host ended the meeting for everyone", "Did you leave by mistake?",
        "How was the call quality?"}) {
    expectStates({{"a notice beside the controls", everyProvider, meet, {notice}, joined}});
  }
  expectStates({{"a notice beside every Teams control",
                 {"teams"},
                 {"Leave call", "Mute", "Rejoin the call", "Dismiss", "Send feedback"},
                 {"Did you leave by mistake?", "How was the call quality?"},
                 joined}});
}

TEST(CallState, IsUnknownWhileTheConnectionIsLost) {
  expectStates({
      {"the notice alone", everyProvider, {}, {"Reconnecting..."}, unknown},
      {"before an ending notice",
       everyProvider,
       {},
       {"Connecting…", "You left the meeting"},
       unknown},
      {"behind an ending notice",
       everyProvider,
       {},
       {"Call ended", "Trying to reconnect"},
       unknown},
      {"before the host's ending",
       trusted,
       {},
       {"The host has ended this meeting.", "Reconnecting"},
       unknown},
      {"before the ending for everyone",
       {"meet"},
       {},
       {"Your host ended the meeting for everyone", "Reconnecting"},
       unknown},
      {"before the offer to rejoin",
       {"teams"},
       {"Rejoin the call"},
       {"Did you leave by mistake?", "Reconnecting..."},
       unknown},
      {"beside the control to rejoin alone",
       {"teams"},
       {"Rejoin the call"},
       {"Reconnecting..."},
       unknown},
      {"before the survey",
       {"teams"},
       {"Dismiss", "Send feedback"},
       {"How was the call quality?", "Reconnecting..."},
       unknown},
      {"a control that says so does not count",
       everyProvider,
       {"Reconnecting..."},
       {"You left the meeting"},
       left},
  });
}

TEST(CallState, IsLeftByANoticeForEveryProvider) {
  expectStates({
      {"left", everyProvider, {}, {"You left the meeting"}, left},
      {"a straight apostrophe", everyProvider, {}, {"You've left the meeting"}, left},
      {"a typographic apostrophe", everyProvider, {}, {"You’ve left the meeting"}, left},
      {"ended", everyProvider, {}, {"This meeting has ended"}, left},
      {"left the call", everyProvider, {}, {"You left the call"}, left},
      {"among other notices", everyProvider, {}, {"x", " CALL  ended! ", "y"}, left},
      {"beside a join button",
       everyProvider,
       {"Rejoin", "Join now", "Microphone"},
       {"You left the meeting"},
       left},
      {"beside a leave control without a microphone",
       everyProvider,
       {"Leave"},
       {"You left the meeting"},
       left},
      {"an ordinary sentence", everyProvider, {}, {"We discussed why the call ended"}, unknown},
      {"a control that says so", everyProvider, {"You left the meeting"}, {}, unknown},
      {"any other notice", everyProvider, {}, {"QA left the meeting", "People"}, unknown},
  });
}

TEST(CallState, IsLeftByTheHostsEndingForThreeProviders) {
  for (const std::string notice :
       {"The host has ended this meeting.", "This meeting has been ended by host",
        "The host has ended this meeting"}) {
    expectStates({
        {"trusted", trusted, {}, {notice}, left},
        {"behind another notice", trusted, {}, {"x", notice}, left},
        {"not trusted", others, {}, {notice}, unknown},
    });
  }
  expectStates({{"an ending of one's own behind it",
                 others,
                 {},
                 {"The host has ended this meeting.", "Call ended"},
                 left}});
}

TEST(CallState, IsLeftByTheEndingForEveryoneInMeetAlone) {
  for (const std::string notice :
       {"Your host ended the meeting for everyone", "You’ve ended the meeting for everyone"}) {
    expectStates({
        {"Meet", {"meet"}, {}, {notice}, left},
        {"everybody else",
         {"zoom", "teams", "webex", "application", "", "Meet"},
         {},
         {notice},
         unknown},
    });
  }
}

TEST(CallState, IsLeftByTheOfferToRejoinInTeamsAlone) {
  const Labels rejoin{"Rejoin the call"};
  const std::vector<std::string_view> notTeams{"zoom", "meet", "webex", "application", "Teams"};
  for (const std::string notice :
       {"Did you leave by mistake?",
        "Stay connected after your meeting Chat with everyone or pick specific people"}) {
    expectStates({
        {"the notice and the control", {"teams"}, rejoin, {notice}, left},
        {"among others", {"teams"}, {"x", " REJOIN the  call"}, {"y", notice}, left},
        {"the notice alone", {"teams"}, {}, {notice}, unknown},
        {"a longer control", {"teams"}, {"Rejoin the call now"}, {notice}, unknown},
        {"a shortcut behind the control", {"teams"}, {"Rejoin the call (r)"}, {notice}, unknown},
        {"another provider", notTeams, rejoin, {notice}, unknown},
        {"the notice falls through to an ending", {"teams"}, {}, {notice, "Call ended"}, left},
    });
  }
  expectStates({
      {"the control alone", {"teams"}, rejoin, {}, unknown},
      {"a longer notice", {"teams"}, rejoin, {"Did you leave by mistake? Rejoin"}, unknown},
  });
}

TEST(CallState, IsLeftByTheSurveyInTeamsAlone) {
  const Labels both{"Dismiss", "Send feedback"};
  const Labels survey{"How was the call quality?"};
  expectStates({
      {"the question and both controls", {"teams"}, both, survey, left},
      {"in any order and case",
       {"teams"},
       {"SEND feedback", "x", "dismiss"},
       {"y", "how was  the call quality?"},
       left},
      {"one of the controls", {"teams"}, {"Dismiss"}, survey, unknown},
      {"the other control", {"teams"}, {"Send feedback"}, survey, unknown},
      {"no controls", {"teams"}, {}, survey, unknown},
      {"the controls alone", {"teams"}, both, {}, unknown},
      {"another notice", {"teams"}, both, {"How was the call"}, unknown},
      {"longer controls", {"teams"}, {"Dismiss all", "Send feedback"}, survey, unknown},
      {"the rejoin control does not stand in", {"teams"}, {"Rejoin the call"}, survey, unknown},
      {"another provider",
       {"zoom", "meet", "webex", "application", "Teams"},
       both,
       survey,
       unknown},
  });
}

struct TileCase {
  std::string_view sentence;
  std::string_view provider;
  Labels controls;
  Labels notices;
  bool complete;
  CallState state;
};

TEST(CallState, IsJoinedByATileInZoomAlone) {
  const TileCase cases[] = {
      {"a tile", "zoom", {}, {}, true, joined},
      {"Teams has no tiles", "teams", {}, {}, true, unknown},
      {"Meet has no tiles", "meet", {}, {}, true, unknown},
      {"others have no tiles", "webex", {}, {}, true, unknown},
      {"providers are case-sensitive", "Zoom", {}, {}, true, unknown},
      {"a lost connection", "zoom", {}, {"Connecting…"}, true, unknown},
      {"a lost connection among notices",
       "zoom",
       {},
       {"x", "Trying to reconnect..."},
       true,
       unknown},
      {"an ending notice outranks it", "zoom", {}, {"You left the meeting"}, true, left},
      {"the host's ending outranks it",
       "zoom",
       {},
       {"The host has ended this meeting."},
       true,
       left},
      {"any other notice does not", "zoom", {}, {"Recording"}, true, joined},
      {"controls that decide nothing do not", "zoom", {"Join", "Mute"}, {}, true, joined},
      {"incomplete evidence", "zoom", {}, {}, false, unknown},
  };
  for (const TileCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    Evidence evidence;
    evidence.controls = row.controls;
    evidence.notices = row.notices;
    evidence.nativeZoomTile = true;
    evidence.complete = row.complete;
    EXPECT_EQ(evidence.state(row.provider), row.state);
  }
}

}  // namespace
}  // namespace callmonitor
