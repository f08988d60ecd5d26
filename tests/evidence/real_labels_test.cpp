// Labels of controls as real clients show them, and every rule that each one meets: what a change
// of a pattern would change for people.
#include <gtest/gtest.h>

#include "evidence/label_rules.h"

namespace callmonitor {
namespace {

using Names = std::vector<std::string>;

struct Rule {
  std::string_view name;
  const Pattern& pattern;
  bool stripped;  // sees the label without its shortcut
};

const Rule rules[] = {
    {"chatContent", chatContentPattern, false}, {"zoomTile", zoomTilePattern, false},
    {"lobbyAudio", lobbyAudioPattern, false},   {"lobbyVideo", lobbyVideoPattern, false},
    {"joinControl", joinControlPattern, false}, {"leaveControl", leaveControlPattern, false},
    {"muteControl", muteControlPattern, true},  {"unmuteControl", unmuteControlPattern, true},
    {"stopVideo", stopVideoPattern, true},      {"startVideo", startVideoPattern, true},
    {"joinExact", joinExactPattern, true},
};

// The rules that a control with this label meets, in the order of the table; the words of the
// joined rule and the option of the preview come last.
Names rulesMet(std::string_view label) {
  const std::string plain = normalized(label);
  const std::string stripped = shortcutSuffixPattern.removedFrom(plain);
  Names met;
  for (const Rule& rule : rules) {
    if (matches(rule.stripped ? stripped : plain, rule.pattern)) met.emplace_back(rule.name);
  }
  const auto holds = [&](std::string_view word) { return plain.find(word) != std::string::npos; };
  if (holds(phrases::microphoneWords[0]) || holds(phrases::microphoneWords[1])) {
    met.emplace_back("joinedWord");
  }
  if (holds(phrases::zoomPreviewOption)) met.emplace_back("preview");
  return met;
}

struct LabelCase {
  std::string_view label;
  Names rules;
};

const LabelCase controls[] = {
    {"Call", {}},
    {"Join", {"joinControl", "joinExact"}},
    {"Create Link", {}},
    {"Accept", {}},
    {"Decline", {}},
    {"End & Accept", {}},
    {"Hold & Accept", {}},
    {"End", {"leaveControl"}},
    {"Cancel", {}},
    {"Captions", {"chatContent"}},
    {"Just leave the call", {}},
    {"End call for everyone", {}},
    {"Leave call", {"leaveControl"}},
    {"End call", {"leaveControl"}},
    {"Turn off microphone (⌘ + D)", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Turn on microphone (⌘ + D)", {"lobbyAudio", "unmuteControl", "joinedWord"}},
    {"Turn off microphone (⌘ + d)", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Turn on microphone (⌘ + d)", {"lobbyAudio", "unmuteControl", "joinedWord"}},
    {"Turn off camera (⌘ + e)", {"lobbyVideo", "stopVideo"}},
    {"Turn off microphone", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Turn on microphone", {"lobbyAudio", "unmuteControl", "joinedWord"}},
    {"Mute video camera", {"lobbyAudio", "lobbyVideo", "joinedWord"}},
    {"Unmute video camera", {"lobbyAudio", "lobbyVideo", "joinedWord"}},
    {"Add people", {}},
    {"Contributors 3", {}},
    {"More actions", {}},
    {"People - 3 joined", {}},
    {"In-call messages", {"chatContent"}},
    {"Let participants send messages", {"chatContent"}},
    {"Continuous chat is OFF", {"chatContent"}},
    {"Send a message", {}},
    {"Pin message", {}},
    {"Lower all hands", {}},
    {"You can't unmute someone else", {"lobbyAudio", "joinedWord"}},
    {"Mute QA Person's microphone", {"lobbyAudio", "joinedWord"}},
    {"QA Person says in chat: hello", {"chatContent"}},
    {"Chat with everyone", {"chatContent"}},
    {"Turn off microphone (ctrl + d)", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Turn off camera (ctrl + e)", {"lobbyVideo", "stopVideo"}},
    {"Turn off microphone (CTRL + D)", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Join now", {"joinControl", "joinExact"}},
    {"Ask to join", {"joinControl", "joinExact"}},
    {"Dismiss", {}},
    {"Stop presenting", {}},
    {"You are presenting", {}},
    {"Mute", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Unmute", {"lobbyAudio", "unmuteControl", "joinedWord"}},
    {"Turn camera on", {"lobbyVideo"}},
    {"Turn camera off", {"lobbyVideo"}},
    {"Leave", {"leaveControl"}},
    {"More options. Use left and right arrow keys to navigate.", {}},
    {"Include computer sound", {}},
    {"Share", {}},
    {"Raise", {}},
    {"Lower", {}},
    {"Show all background effects", {}},
    {"Mute mic", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Unmute mic", {"lobbyAudio", "unmuteControl", "joinedWord"}},
    {"Navigate back to call window.", {}},
    {"Resume", {}},
    {"Hang up", {"leaveControl"}},
    {"Stop sharing", {}},
    {"Leave room", {}},
    {"Return", {}},
    {"Join room", {}},
    {"Leave (Ctrl+Shift+H)", {"leaveControl"}},
    {"Turn camera off (⌘+Shift+O)", {"lobbyVideo"}},
    {"Mute (⌘+Shift+M)", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Continue on this browser", {}},
    {"Join meeting from this browser", {}},
    {"Rejoin", {}},
    {"Mute microphone", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"Join Now", {"joinControl", "joinExact"}},
    {"Start video", {"lobbyVideo", "startVideo"}},
    {"Stop video", {"lobbyVideo", "stopVideo"}},
    {"Leave Meeting", {"leaveControl"}},
    {"End/Exit Meeting", {}},
    {"Start Video", {"lobbyVideo", "startVideo"}},
    {"Start", {}},
    {"Join meeting", {"joinControl", "joinExact"}},
    {"Meeting beitreten", {}},
    {"Leave Room", {}},
    {"Join Breakout Room", {}},
    {"Ask for Help", {}},
    {"Join a Meeting", {}},
    {"Join Meeting", {"joinControl", "joinExact"}},
    {"Login", {}},
    {"Home", {}},
    {"Sign In", {}},
    {"Audio, turn on, currently muted", {"lobbyAudio", "joinedWord"}},
    {"Test speaker and mic", {}},
    {"Audio, turn off, currently unmuted Mute", {"lobbyAudio", "joinedWord"}},
    {"Video, turn off, currently on Stop video", {"lobbyVideo"}},
    {"Video, turn on, currently off Start video", {"lobbyVideo"}},
    {"Leave meeting", {"leaveControl"}},
    {"End Meeting for All", {}},
    {"Always show this preview when joining", {"preview"}},
    {"More audio controls", {}},
    {"Join Audio by Computer", {}},
    {"mute my microphone", {"lobbyAudio", "muteControl", "joinedWord"}},
    {"stop my video, button", {"lobbyVideo"}},
    {"Stop Video", {"lobbyVideo", "stopVideo"}},
};

TEST(RealLabels, MeetTheirRulesAndNoOthers) {
  for (const LabelCase& row : controls) {
    EXPECT_EQ(rulesMet(row.label), row.rules) << row.label;
  }
}

}  // namespace
}  // namespace callmonitor
