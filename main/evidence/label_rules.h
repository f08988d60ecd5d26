// The vocabulary that turns accessibility labels into facts: one normalisation, one table of
// patterns and phrases, and the predicates that need nothing else.
//
// Every pattern and phrase is written for normalised text, which is why all of them are lower case.
// The wording is that of real clients; widening a pattern changes what counts as a call.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "text/pattern.h"

namespace callmonitor {

// Lower-cased, every run of white space one space, none at either end. Punctuation, apostrophes of
// both kinds and symbols stay.
[[nodiscard]] std::string normalized(std::string_view label);

// Whether the pattern is found anywhere in the text, which the caller has normalised.
[[nodiscard]] inline bool matches(std::string_view text, const Pattern& pattern) {
  return pattern.foundIn(text);
}

// The containers in which other people's words live. A letter is a to z only: "chat2" is a chat,
// "chatter" is not.
inline const Pattern chatContentPattern(
    "(^|[^a-z])(chat|messages|transcript|transcription|captions|conversation|quoted)([^a-z]|$)");

// The client has lost its connection; nothing about the call can be decided.
inline const Pattern reconnectingPattern(
    R"(^(reconnecting|connecting|trying to reconnect)([.!…]|\.{3})?$)");

// The end of a participant tile's label in a native Zoom window.
inline const Pattern zoomTilePattern(", computer audio (unmuted|muted)(, video (on|off))?$");

// The toggles and the button of a pre-join screen.
inline const Pattern lobbyAudioPattern("(microphone|mute|audio, turn (on|off))");
inline const Pattern lobbyVideoPattern("(camera|video)");
inline const Pattern joinControlPattern(
    R"(^(join( now| meeting| call)?|ask to join)(\s*\([^)]*\))?$)");

// Buttons that end one's own part in a call, with or without a keyboard shortcut behind.
inline const Pattern leaveControlPattern(
    R"(^(leave( (call|meeting))?|disconnect( (call|voice))?|hang up|end( (call|meeting))?)(\s*\([^)]*\))?$)");

// Notices that a call is over: for every provider; for Zoom, Meet and Teams; for Meet alone.
inline const Pattern leftNoticePattern(
    R"(^(you (have )?left (the )?(meeting|call)|you['’]ve left (the )?(meeting|call)|(the |this )?(meeting|call) (has )?ended)[.!]?$)");
inline const Pattern hostEndedPattern(
    R"(^((the |this )?meeting has been ended by (the )?host|(the )?host has ended (the |this )?meeting)[.!]?$)");
inline const Pattern endedForEveryonePattern(
    R"(^(your host (has )?ended|you['’]ve ended|you have ended) the meeting for everyone[.!]?$)");

// One keyboard shortcut in parentheses at the end of a label. The patterns that follow see labels
// without it.
inline const Pattern shortcutSuffixPattern(R"(\s*\([^)]*\)\s*$)");
inline const Pattern muteControlPattern(
    "^(mute( (my |your )?(audio|microphone|mic))?|turn off (microphone|mic))$");
inline const Pattern unmuteControlPattern(
    "^(unmute( (my |your )?(audio|microphone|mic))?|turn on (microphone|mic)|join audio)$");
inline const Pattern stopVideoPattern("^(stop (my |your )?video|turn off (camera|video))$");
inline const Pattern startVideoPattern("^(start (my |your )?video|turn on (camera|video))$");
inline const Pattern joinExactPattern("^(join( now| meeting| call)?|ask to join)$");

// Literal phrases, compared with normalised text.
namespace phrases {
inline constexpr std::array<std::string_view, 2> teamsPostCall{
    "did you leave by mistake?",
    "stay connected after your meeting chat with everyone or pick specific people"};
inline constexpr std::string_view teamsRejoin = "rejoin the call";
inline constexpr std::string_view teamsQualityQuestion = "how was the call quality?";
inline constexpr std::string_view teamsDismiss = "dismiss";
inline constexpr std::string_view teamsSendFeedback = "send feedback";
inline constexpr std::array<std::string_view, 2> microphoneWords{"mute", "microphone"};
inline constexpr std::string_view zoomAudio = "audio";
inline constexpr std::string_view zoomStart = "start";
inline constexpr std::string_view zoomPreviewOption = "always show this preview when joining";
}  // namespace phrases

// Whether an element holds other people's words, so that it and everything beneath it stays out of
// the evidence: by its role, its subrole, or a label that names a chat. `label` is as read.
[[nodiscard]] bool excludedContent(std::string_view role, std::string_view subrole,
                                   std::string_view label);

// Whether a normalised text is one of the two sentences that Teams shows after a call. Equality: a
// longer text that holds the sentence is no notice.
[[nodiscard]] bool teamsPostCallText(std::string_view normalizedText);

// The same for a label as read.
[[nodiscard]] bool teamsPostCallNotice(std::string_view label);

// Whether an element is a Teams post-call sentence, which counts even though one of the two holds
// the word "chat". `title` and `description` are as read; the value is not consulted.
[[nodiscard]] bool providerNoticeLeaf(std::string_view role, std::string_view subrole,
                                      std::string_view title, std::string_view description);

}  // namespace callmonitor
