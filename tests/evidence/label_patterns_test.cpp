// The table of patterns, each with labels that it takes and labels that it leaves. All of them see
// normalised text; the media patterns see it without its shortcut.
#include <gtest/gtest.h>

#include "evidence/label_rules.h"

namespace callmonitor {
namespace {

using Labels = std::vector<std::string_view>;

void expectMatches(const Pattern& pattern, const Labels& taken, const Labels& left) {
  for (const std::string_view label : taken) EXPECT_TRUE(matches(label, pattern)) << label;
  for (const std::string_view label : left) EXPECT_FALSE(matches(label, pattern)) << label;
}

TEST(LabelPatterns, AChatIsAWordBoundedByAnythingButLetters) {
  expectMatches(
      chatContentPattern,
      {"chat",
       "meeting chat",
       "chat with everyone",
       "chat2",
       "2chat",
       "chat_x",
       "-chat-",
       "échat",
       "chaté",
       "messages",
       "in-call messages",
       "transcript",
       "live transcription",
       "captions",
       "closed captions on",
       "conversation",
       "quoted message",
       "the quoted",
       "chatter chat",
       "chat | meeting with qa"},
      {"", "chatter", "chats", "webchat", "message", "transcripts", "transcriptions", "caption",
       "conversations", "misquoted", "quotedly", "unquoted", "Chat", "leave call"});
}

TEST(LabelPatterns, ALostConnectionIsOneOfThreePhrasesWithOneEnding) {
  expectMatches(reconnectingPattern,
                {"reconnecting", "reconnecting.", "reconnecting!", "reconnecting…",
                 "reconnecting...", "connecting", "connecting…", "connecting...",
                 "trying to reconnect", "trying to reconnect...", "trying to reconnect!"},
                {"", "reconnecting..", "reconnecting....", "reconnecting.!", "reconnecting……",
                 "reconnecting to audio", "reconnecting ...", "disconnecting", "trying to connect",
                 "please wait, reconnecting", "reconnect", "reconnecting?", "connected"});
}

TEST(LabelPatterns, AZoomTileEndsWithItsAudioAndPerhapsItsVideo) {
  expectMatches(zoomTilePattern,
                {"qa, computer audio unmuted", "qa, computer audio muted",
                 "qa, computer audio unmuted, video on", "qa, computer audio muted, video off",
                 ", computer audio muted", "john doe, computer audio unmuted, video off"},
                {"", "computer audio unmuted", "qa computer audio unmuted",
                 "qa, computer audio unmuted,video on", "qa, computer audio unmuted, video",
                 "qa, computer audio unmuted, video on, pinned", "qa, computer audio",
                 "qa, phone audio muted", "qa, computer audio unmuted."});
}

TEST(LabelPatterns, ALobbyOffersAudioAnywhereInALabel) {
  expectMatches(lobbyAudioPattern,
                {"microphone", "mute", "unmute", "muted", "turn off microphone", "test microphones",
                 "audio, turn on, currently muted", "audio, turn off, currently unmuted",
                 "audio, turn on", "audio, turn off"},
                {"", "audio", "audio, turn", "audio turn on", "mic", "turn off mic", "join audio"});
}

TEST(LabelPatterns, ALobbyOffersVideoAnywhereInALabel) {
  expectMatches(lobbyVideoPattern,
                {"camera", "video", "start video", "turn on camera",
                 "video, turn on, currently off", "cameras", "videos"},
                {"", "cam", "vide", "screen"});
}

constexpr std::string_view joins[] = {"join", "join now", "join meeting", "join call",
                                      "ask to join"};
constexpr std::string_view noJoins[] = {
    "",           "joining",      "rejoin",      "join a meeting",
    "join audio", "join nowhere", "please join", "ask to join now",
    "join now!",  "switch here"};

TEST(LabelPatterns, AJoinControlMayCarryAShortcut) {
  for (const std::string_view label : joins) {
    SCOPED_TRACE(label);
    const std::string text(label);
    EXPECT_TRUE(matches(text, joinControlPattern));
    EXPECT_TRUE(matches(text + " (⌘ + j)", joinControlPattern));
    EXPECT_TRUE(matches(text + "()", joinControlPattern));
    EXPECT_FALSE(matches(text + " (a) (b)", joinControlPattern));
    EXPECT_FALSE(matches(text + " (a) x", joinControlPattern));
    EXPECT_FALSE(matches(text + " (a", joinControlPattern));
  }
  for (const std::string_view label : noJoins) {
    EXPECT_FALSE(matches(label, joinControlPattern)) << label;
  }
}

TEST(LabelPatterns, AnExactJoinCarriesNoShortcut) {
  for (const std::string_view label : joins) {
    SCOPED_TRACE(label);
    EXPECT_TRUE(matches(label, joinExactPattern));
    EXPECT_FALSE(matches(std::string(label) + " (⌘ + j)", joinExactPattern));
  }
  for (const std::string_view label : noJoins) {
    EXPECT_FALSE(matches(label, joinExactPattern)) << label;
  }
}

TEST(LabelPatterns, ALeaveControlEndsOnesOwnPart) {
  expectMatches(
      leaveControlPattern,
      {"leave", "leave call", "leave meeting", "disconnect", "disconnect call", "disconnect voice",
       "hang up", "end", "end call", "end meeting", "leave call (⌘ + w)", "leave (ctrl+shift+h)",
       "leave(x)", "hang up ()", "end meeting  (x)"},
      {"", "leave room", "leave the call", "leave call now", "please leave", "disconnected",
       "disconnect meeting", "hang", "hang up call", "end call for all", "end meeting for all",
       "ended", "just leave the call", "end/exit meeting", "leave (a) (b)", "leave (a",
       "leave voice", "leave computer audio"});
}

TEST(LabelPatterns, ANoticeSaysThatTheCallIsOver) {
  expectMatches(
      leftNoticePattern,
      {"you left the meeting", "you left meeting", "you left the call", "you left call",
       "you have left the meeting", "you have left call", "you've left the meeting",
       "you’ve left the meeting", "you’ve left call", "meeting ended", "call ended",
       "the meeting ended", "the call has ended", "this meeting has ended", "this call ended",
       "meeting has ended", "you left the meeting.", "call ended!"},
      {"", "we discussed why the call ended", "you left", "you left the room",
       "you have left the meeting early", "youve left the meeting", "you`ve left the meeting",
       "your call ended", "a meeting ended", "meeting ended..", "meeting ended…", "call ended?",
       "meeting is ended", "you've been removed from the meeting", "you had left the meeting",
       "qa left the meeting", "the meeting has been ended"});
}

TEST(LabelPatterns, ANoticeSaysThatTheHostEndedTheMeeting) {
  expectMatches(
      hostEndedPattern,
      {"the host has ended this meeting.", "the host has ended this meeting",
       "host has ended the meeting", "host has ended meeting", "the host has ended meeting!",
       "this meeting has been ended by host", "the meeting has been ended by the host",
       "meeting has been ended by host.", "this meeting has been ended by the host!"},
      {"", "your host ended the meeting for everyone", "you’ve ended the meeting for everyone",
       "the host ended this meeting", "the host has ended this call",
       "this call has been ended by host", "the host has ended this meeting..",
       "meeting has been ended by the hosts", "my host has ended this meeting",
       "the meeting has been ended"});
}

TEST(LabelPatterns, ANoticeSaysThatTheMeetingEndedForEveryone) {
  expectMatches(
      endedForEveryonePattern,
      {"your host ended the meeting for everyone", "your host has ended the meeting for everyone",
       "you’ve ended the meeting for everyone", "you've ended the meeting for everyone",
       "you have ended the meeting for everyone", "your host ended the meeting for everyone.",
       "you have ended the meeting for everyone!"},
      {"", "the host has ended this meeting.", "the host ended the meeting for everyone",
       "you ended the meeting for everyone", "your host ended the call for everyone",
       "your host ended the meeting", "your host ended the meeting for everyone else"});
}

constexpr std::string_view owners[] = {"", "my ", "your "};

TEST(LabelPatterns, AMuteControlSilencesTheMicrophone) {
  for (const std::string_view owner : owners) {
    for (const std::string thing : {"audio", "microphone", "mic"}) {
      const std::string label = "mute " + std::string(owner) + thing;
      EXPECT_TRUE(matches(label, muteControlPattern)) << label;
      EXPECT_FALSE(matches(label, unmuteControlPattern)) << label;
    }
  }
  expectMatches(muteControlPattern, {"mute", "turn off microphone", "turn off mic"},
                {"", "unmute", "muted", "mute all", "mute video camera", "mute qa's microphone",
                 "turn off microphone (⌘ + d)", "turn off audio", "turn off my mic",
                 "turn on microphone", "microphone", "please mute", "mute the mic"});
}

TEST(LabelPatterns, AnUnmuteControlOpensTheMicrophone) {
  for (const std::string_view owner : owners) {
    for (const std::string thing : {"audio", "microphone", "mic"}) {
      const std::string label = "unmute " + std::string(owner) + thing;
      EXPECT_TRUE(matches(label, unmuteControlPattern)) << label;
      EXPECT_FALSE(matches(label, muteControlPattern)) << label;
    }
  }
  expectMatches(unmuteControlPattern, {"unmute", "turn on microphone", "turn on mic", "join audio"},
                {"", "mute", "unmuted", "unmute all", "turn on audio", "turn off mic",
                 "join audio by computer", "unmute video", "turn on microphone (d)"});
}

TEST(LabelPatterns, AStopControlClosesTheCamera) {
  expectMatches(
      stopVideoPattern,
      {"stop video", "stop my video", "stop your video", "turn off camera", "turn off video"},
      {"", "stop", "stop camera", "stop the video", "stop video (v)", "turn camera off",
       "turn off my camera", "start video", "turn on video", "stop videos", "stop my video, button",
       "stop sharing"});
}

TEST(LabelPatterns, AStartControlOpensTheCamera) {
  expectMatches(
      startVideoPattern,
      {"start video", "start my video", "start your video", "turn on camera", "turn on video"},
      {"", "start", "start camera", "start the video", "start video (v)", "turn camera on",
       "turn on my camera", "stop video", "turn off video", "restart video"});
}

}  // namespace
}  // namespace callmonitor
