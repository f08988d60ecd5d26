// What the windows of native and generic clients show.
#include <gtest/gtest.h>

#include "support/sampling.h"

namespace callmonitor {
namespace {

using namespace support;

struct NativeSampling : SamplingTest {
  // Samples a client that shows one window.
  AppSample showing(const Node& shown, const std::string& bundle = "us.zoom.xos") {
    quit(42);
    start(42, bundle, {shown});
    return sample(42);
  }
};

std::string repeated(const std::string& character, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += character;
  return text;
}

TEST_F(NativeSampling, EveryWindowOfANativeClientGivesASurfaceOfItsProvider) {
  struct Row {
    const char* bundle;
    const char* provider;
  };
  for (const Row& row :
       std::vector<Row>{{"us.zoom.xos", "zoom"}, {"com.cisco.webexmeetingsapp", "webex"}}) {
    SCOPED_TRACE(row.bundle);
    quit(42);
    start(42, row.bundle, {window("a", "Home"), window("b", "Call", callControls(true))});
    const AppSample sampled = sample(42);
    ASSERT_EQ(conferencesOf(sampled),
              (std::vector<Conference>{{row.provider, ""}, {row.provider, ""}}));
    EXPECT_EQ(sampled.surfaces[0].state, CallState::unknown);
    EXPECT_FALSE(sampled.surfaces[0].mediaActive);
    EXPECT_EQ(sampled.surfaces[1].window, identifierOf("b"));
    EXPECT_EQ(sampled.surfaces[1].element, identifierOf("b")) << "the window is its own view";
    EXPECT_EQ(sampled.surfaces[1].state, CallState::joined);
    EXPECT_EQ(sampled.surfaces[1].title, "Call");
    EXPECT_TRUE(sampled.surfaces[1].mediaActive);
  }
}

TEST_F(NativeSampling, ADialogOfANativeClientIsANotice) {
  const Node dialog = with(group({titled(node("", "AXStaticText"), "You left the meeting")}),
                           "AXSubrole", scripted::textAnswer("AXDialog"));
  EXPECT_EQ(showing(window("w", "Zoom", {dialog})).surfaces.at(0).state, CallState::left);
}

TEST_F(NativeSampling, AnAudioButtonThatFailsIsNotRecoveredHere) {
  const Node audio = with(titled(node("", "AXButton"), "Audio"), "AXDescription",
                          scripted::codeAnswer(platform::code::failure));
  (void)showing(window("w", "Zoom", {audio}));
  EXPECT_EQ(timesCalled("read w.0 AXIdentifier"), 0U);
}

// Titles.

TEST_F(NativeSampling, ATitleIsCutTo200Characters) {
  struct Row {
    const char* sentence;
    std::string title;
    std::string kept;
  };
  for (const Row& row : std::vector<Row>{
           {"no title", "", ""},
           {"200 characters", repeated("x", 200), repeated("x", 200)},
           {"201 characters", repeated("x", 201), repeated("x", 200)},
           {"201 characters of several bytes", repeated("\u4f1a", 201), repeated("\u4f1a", 200)},
           {"201 characters of two code points", repeated("e\u0301", 201),
            repeated("e\u0301", 200)},
           {"white space is kept", "  a  b ", "  a  b "},
       }) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(showing(window("w", row.title)).surfaces.at(0).title, row.kept);
  }
  EXPECT_EQ(showing(node("w", "AXWindow")).surfaces.at(0).title, "") << "a window without a title";
}

// The native Zoom meeting window, in which a participant's tile proves presence.

Node zoomTile() {
  return with(titled(node("", "AXGroup"), "QA, Computer audio unmuted"), "AXRoleDescription",
              scripted::textAnswer("Video render"));
}

TEST_F(NativeSampling, TilesCountInAWindowTitledZoomMeetingOnly) {
  struct Row {
    const char* title;
    CallState state;
  };
  for (const Row& row : std::vector<Row>{
           {"Zoom Meeting", CallState::joined},
           {"zoom meeting", CallState::joined},
           {"  ZOOM \t Meeting\n", CallState::joined},
           {"Zoom\u00a0Meeting", CallState::joined},
           {"Zoom Meeting 40-Minutes", CallState::unknown},
           {"My Zoom Meeting", CallState::unknown},
           {"ZoomMeeting", CallState::unknown},
           {"Zoom Workplace", CallState::unknown},
           {"", CallState::unknown},
       }) {
    SCOPED_TRACE(row.title);
    EXPECT_EQ(showing(window("w", row.title, {zoomTile()})).surfaces.at(0).state, row.state);
  }
}

TEST_F(NativeSampling, TilesProveNothingInAnotherProvidersWindow) {
  EXPECT_EQ(showing(window("w", "Zoom Meeting", {zoomTile()}), "com.cisco.webexmeetingsapp")
                .surfaces.at(0)
                .state,
            CallState::unknown);
}

// Generic clients.

struct GenericSampling : SamplingTest {
  AppSample showing(const std::string& bundle, bool regular = true) {
    quit(42);
    start(42, bundle, {window("a", "Call", callControls(true)), window("b", "Contacts")});
    desktop().applications.back().regular = regular;
    return sample(42);
  }
  void play(const std::string& bundle, bool input, bool output) {
    desktop().audio = {{bundle, input, output}};
  }
};

constexpr const char* genericBundle = "org.example.CustomCalls";

TEST_F(GenericSampling, EveryWindowOfAGenericClientGivesASurface) {
  play(genericBundle, true, true);
  const AppSample sampled = showing(genericBundle);
  ASSERT_EQ(conferencesOf(sampled),
            (std::vector<Conference>{{"application", ""}, {"application", ""}}));
  EXPECT_EQ(sampled.surfaces[0].window, identifierOf("a"));
  EXPECT_EQ(sampled.surfaces[0].element, identifierOf("a"));
  EXPECT_EQ(sampled.surfaces[0].title, "Call");
  EXPECT_EQ(sampled.surfaces[0].state, CallState::joined);
  EXPECT_TRUE(sampled.surfaces[0].mediaActive);
  EXPECT_EQ(sampled.surfaces[1].state, CallState::unknown) << "audio alone joins nothing";
  EXPECT_FALSE(sampled.browser);
}

TEST_F(GenericSampling, AClientIsGenericOnlyWhileItCapturesAndPlays) {
  struct Row {
    const char* sentence;
    const char* bundle;
    bool regular;
    std::optional<std::vector<AudioProcess>> audio;
    bool generic;
  };
  const auto both = [](const std::string& bundle) {
    return std::vector<AudioProcess>{{bundle, true, true}};
  };
  for (const Row& row : std::vector<Row>{
           {"both", genericBundle, true, both(genericBundle), true},
           {"a helper that does both", genericBundle, true,
            both(std::string(genericBundle) + ".helper"), true},
           {"a helper that plays beside a client that captures", genericBundle, true,
            std::vector<AudioProcess>{{genericBundle, true, false},
                                      {std::string(genericBundle) + ".helper", false, true}},
            true},
           {"capture alone", genericBundle, true,
            std::vector<AudioProcess>{{genericBundle, true, false}}, false},
           {"playing alone", genericBundle, true,
            std::vector<AudioProcess>{{genericBundle, false, true}}, false},
           {"silence", genericBundle, true,
            std::vector<AudioProcess>{{genericBundle, false, false}}, false},
           {"another client's audio", genericBundle, true, both("org.example.Other"), false},
           {"no audio process", genericBundle, true, std::vector<AudioProcess>(), false},
           {"no knowledge of audio", genericBundle, true, std::nullopt, false},
           {"an application that is not regular", genericBundle, false, both(genericBundle), false},
           {"FaceTime", "com.apple.FaceTime", true, both("com.apple.FaceTime"), true},
           {"another application of the system", "com.apple.VoiceMemos", true,
            both("com.apple.VoiceMemos"), false},
           {"this system's own application", "ai.corvana.desktop", true, both("ai.corvana.desktop"),
            false},
           {"its helper", "ai.corvana.desktop.helper", true, both("ai.corvana.desktop.helper"),
            false},
       }) {
    SCOPED_TRACE(row.sentence);
    desktop().audio = row.audio;
    EXPECT_EQ(showing(row.bundle, row.regular).surfaces.size(), row.generic ? 2U : 0U);
  }
}

TEST_F(GenericSampling, AnApplicationWithoutIdentifierIsNeverGeneric) {
  play("", true, true);
  start(42, "", {window("a", "Call", callControls())});
  EXPECT_TRUE(sample(42).surfaces.empty());
  desktop().applications[0].bundleIdentifier.reset();
  EXPECT_TRUE(sample(42).surfaces.empty());
}

TEST_F(GenericSampling, AKnownClientIsNeverGenericWhateverItsAudio) {
  for (const char* bundle : {"com.google.Chrome", "com.microsoft.edgemac", webApp}) {
    SCOPED_TRACE(bundle);
    play(audioFamily(bundle), true, true);
    EXPECT_TRUE(showing(bundle).surfaces.empty()) << "its windows show no page";
  }
  play("com.microsoft.teams2", true, true);
  EXPECT_TRUE(showing("com.microsoft.teams2").surfaces.empty());
  play("us.zoom.xos", true, true);
  EXPECT_EQ(conferencesOf(showing("us.zoom.xos")),
            (std::vector<Conference>{{"zoom", ""}, {"zoom", ""}}));
}

TEST_F(GenericSampling, AWindowOfAnApplicationThatIsNoClientIsReadButNotScanned) {
  track(42, {"application", "application:native-1"}, "a", "a");
  const AppSample sampled = showing(genericBundle);  // its audio has stopped
  EXPECT_EQ(sampled.windows, (std::set{identifierOf("a"), identifierOf("b")}));
  EXPECT_TRUE(sampled.viewInventoryComplete);
  EXPECT_TRUE(sampled.surfaces.empty());
  EXPECT_TRUE(callsAfter("scan ").empty());
}

}  // namespace
}  // namespace callmonitor
