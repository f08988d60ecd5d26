// Whether a client shows its pre-join screen, and whether the user is on the air.
#include <gtest/gtest.h>

#include "evidence/call_state.h"

namespace callmonitor {
namespace {

using Labels = std::vector<std::string>;

const std::vector<std::string_view> everyProvider{"zoom",  "meet",        "teams",
                                                  "webex", "application", ""};
const std::vector<std::string_view> notZoom{"meet", "teams", "webex", "application", "", "Zoom"};

struct LobbyCase {
  std::string_view sentence;
  std::vector<std::string_view> providers;
  Labels controls;
  bool lobby;
};

void expectLobbies(const std::vector<LobbyCase>& cases) {
  for (const LobbyCase& row : cases) {
    for (const std::string_view provider : row.providers) {
      SCOPED_TRACE(std::string(row.sentence) + ", provider \"" + std::string(provider) + "\"");
      EXPECT_EQ(meetingLobby(row.controls, provider), row.lobby);
    }
  }
}

TEST(MeetingLobby, OffersAudioVideoAndAWayIn) {
  const std::string audio = "Audio, turn on, currently muted";
  const std::string video = "Video, turn on, currently off";
  expectLobbies({
      {"the toggles of a web client", everyProvider, {audio, video, "Join now"}, true},
      {"microphone and camera",
       everyProvider,
       {"Turn off microphone (⌘ + D)", "Turn off camera (⌘ + E)", "Ask to join"},
       true},
      {"words in another order",
       everyProvider,
       {"Turn microphone on", "Turn camera off", "Join"},
       true},
      {"a join control with a shortcut", everyProvider, {"Mute", "Video", "Join call (j)"}, true},
      {"white space and capitals", everyProvider, {" MUTE ", "VIDEO", " JOIN   NOW"}, true},
      {"one control that speaks of both", everyProvider, {"Mute video camera", "Join"}, true},
      {"no way in", everyProvider, {audio, video}, false},
      {"no audio", everyProvider, {video, "Join now"}, false},
      {"no video", everyProvider, {audio, "Join now"}, false},
      {"a longer way in", everyProvider, {audio, video, "Join a meeting"}, false},
      {"nothing", everyProvider, {}, false},
  });
}

TEST(MeetingLobby, IsNoneOnceTheCallIsJoined) {
  expectLobbies({
      {"leave and mute", everyProvider, {"Leave", "Mute", "Video", "Join"}, false},
      {"leave with the microphone's toggle",
       everyProvider,
       {"Hang up", "Turn off microphone", "Turn off camera", "Join now"},
       false},
  });
  expectLobbies({
      {"a leave control without a microphone word",
       {"zoom"},
       {"Leave", "Audio", "Video", "Join"},
       true},
  });
}

TEST(MeetingLobby, OfZoomHasWordsOfItsOwn) {
  const std::string preview = "Always show this preview when joining";
  expectLobbies({
      {"a bare audio", {"zoom"}, {"Audio", "Video", "Join"}, true},
      {"a bare audio elsewhere", notZoom, {"Audio", "Video", "Join"}, false},
      {"audio with more words", {"zoom"}, {"Audio settings", "Video", "Join"}, false},
      {"a bare video is a word everywhere", notZoom, {"Mute", "Video", "Join"}, true},
      {"start alone is no way in", {"zoom"}, {"Audio", "Video", "Start"}, false},
      {"start with the preview's option", {"zoom"}, {"Audio", "Video", "Start", preview}, true},
      {"the option within a longer label",
       {"zoom"},
       {"Audio", "Video", "Start", preview + " (on)"},
       true},
      {"the option without start", {"zoom"}, {"Audio", "Video", preview}, false},
      {"start and a way in", {"zoom"}, {"Audio", "Video", "Start", "Join"}, true},
      {"a longer start", {"zoom"}, {"Audio", "Video", "Start video", preview}, false},
      {"start with the option but no audio", {"zoom"}, {"Video", "Start", preview}, false},
      {"start with the option but no video", {"zoom"}, {"Audio", "Start", preview}, false},
      {"the option does not help others", notZoom, {"Mute", "Video", "Start", preview}, false},
      {"an end is no way in", {"zoom"}, {"Audio", "Video", "End"}, false},
  });
}

struct MediaCase {
  std::string_view sentence;
  Labels controls;
  bool active;
};

TEST(MediaActive, NeedsALiveMicrophoneAndALiveCameraAndNoOfferAgainstThem) {
  const MediaCase cases[] = {
      {"mute and stop", {"Mute", "Stop video"}, true},
      {"shortcuts are stripped", {"Turn off microphone (⌘ + D)", "Turn off camera"}, true},
      {"white space and capitals", {"  MUTE  my  mic ", "Stop  MY video (v) "}, true},
      {"empty labels beside them", {"Mute", "", "Stop video", ""}, true},
      {"other controls beside them", {"Mute", "Stop video", "Leave call", "Raise hand"}, true},
      {"an offer to join audio", {"Mute", "Stop video", "Join audio"}, false},
      {"an offer to unmute", {"Mute", "Stop video", "Unmute"}, false},
      {"an offer to turn the microphone on", {"Mute", "Stop video", "Turn on mic"}, false},
      {"an offer to start video", {"Mute", "Stop video", "Start video"}, false},
      {"an offer to turn the camera on", {"Mute", "Stop video", "Turn on camera (e)"}, false},
      {"an offer to join", {"Mute", "Stop video", "Join now"}, false},
      {"an offer to join with a shortcut", {"Mute", "Stop video", "Join (j)"}, false},
      {"an offer to ask to join", {"Ask to join", "Mute", "Stop video"}, false},
      {"a longer join is no offer", {"Mute", "Stop video", "Join a meeting"}, true},
      {"a camera that is off", {"Mute", "Start video"}, false},
      {"a microphone that is off", {"Unmute", "Stop video"}, false},
      {"a microphone alone", {"Mute"}, false},
      {"a camera alone", {"Stop video"}, false},
      {"words in another order", {"Mute", "Turn camera off"}, false},
      {"longer labels", {"Mute everyone", "Stop video"}, false},
      {"two shortcuts leave one", {"Mute (a) (b)", "Stop video"}, false},
      {"a label made to stall the search", {"Mute", "Stop video", std::string(200000, '(')}, true},
      {"nothing", {}, false},
      {"empty labels", {"", ""}, false},
  };
  for (const MediaCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(mediaActive(row.controls), row.active);
  }
}

// The controls of a web client in a call, one change at a time.
TEST(MediaActive, FollowsBothTogglesOfACall) {
  const std::string leave = "Leave call";
  EXPECT_TRUE(mediaActive({leave, "Turn off microphone (⌘ + D)", "Turn off camera (⌘ + E)"}));
  EXPECT_FALSE(mediaActive({leave, "Turn on microphone (⌘ + D)", "Turn off camera (⌘ + E)"}));
  EXPECT_FALSE(mediaActive({leave, "Turn off microphone (⌘ + D)", "Turn on camera (⌘ + E)"}));
  EXPECT_FALSE(mediaActive({leave, "Turn on microphone (⌘ + D)", "Turn on camera (⌘ + E)"}));
}

}  // namespace
}  // namespace callmonitor
