// Which meeting a page of a browser or web client shows.
#include <gtest/gtest.h>

#include "support/sampling.h"

namespace callmonitor {
namespace {

using namespace support;
namespace code = platform::code;

constexpr const char* chrome = "com.google.Chrome";
constexpr const char* teamsClient = "com.microsoft.teams2";
const Conference meet{"meet", meetKey};

struct PageSampling : SamplingTest {
  // Samples an application that shows one page.
  AppSample showing(const Node& shown, const std::string& bundle = chrome) {
    quit(7);
    start(7, bundle, {window("w", "Standup", {shown})});
    return sample(7);
  }
};

TEST_F(PageSampling, AMeetingPageGivesASurfaceOfItsWindowAndPage) {
  const AppSample sampled = showing(page("p", meetAddress, callControls(/*mediaOn=*/true)));
  ASSERT_EQ(sampled.surfaces.size(), 1U);
  const Surface& surface = sampled.surfaces[0];
  EXPECT_EQ(surface.window, identifierOf("w"));
  EXPECT_EQ(surface.element, identifierOf("p"));
  EXPECT_EQ(surface.conference, meet);
  EXPECT_EQ(surface.state, CallState::joined);
  EXPECT_EQ(surface.title, "Standup");
  EXPECT_TRUE(surface.mediaActive);
  EXPECT_EQ(memory.elements.at(identifierOf("p")), scripted::element("p"));
  EXPECT_TRUE(memory.seen.contains(identifierOf("p")));
}

TEST_F(PageSampling, TheStateIsWhatThePageShows) {
  const auto state = [&](const std::vector<Node>& children) {
    return showing(page("p", meetAddress, children)).surfaces.at(0).state;
  };
  EXPECT_EQ(state(callControls()), CallState::joined);
  EXPECT_EQ(state(lobbyControls()), CallState::unknown);
  EXPECT_EQ(state(leftNotice()), CallState::left);
  EXPECT_EQ(state({}), CallState::unknown);
  EXPECT_EQ(state({heading("Your host ended the meeting for everyone")}), CallState::left)
      << "by the rules of the page's provider";
}

TEST_F(PageSampling, MediaIsActiveWhenBothTogglesOfferToTurnOff) {
  const auto active = [&](const std::vector<Node>& children) {
    return showing(page("p", meetAddress, children)).surfaces.at(0).mediaActive;
  };
  EXPECT_TRUE(active(callControls(/*mediaOn=*/true)));
  EXPECT_FALSE(active(callControls(/*mediaOn=*/false)));
  EXPECT_FALSE(
      active({button("Leave call"), button("Turn off microphone"), button("Turn on camera")}));
}

TEST_F(PageSampling, TheTitleIsTheWindowsNotThePages) {
  EXPECT_EQ(showing(titled(page("p", meetAddress), "The page")).surfaces.at(0).title, "Standup");
}

TEST_F(PageSampling, OnlyACompleteWebAddressNamesAMeeting) {
  struct Row {
    const char* sentence;
    scripted::Answer address;
    bool meeting;
  };
  for (const Row& row : std::vector<Row>{
           {"an address", scripted::addressAnswer(meetAddress), true},
           {"an address given as text", scripted::textAnswer(meetAddress), true},
           {"a scheme in capitals", scripted::addressAnswer("HTTPS://meet.google.com/abc-defg-hij"),
            true},
           {"an insecure address", scripted::addressAnswer("http://meet.google.com/abc-defg-hij"),
            false},
           {"another scheme", scripted::addressAnswer("ftp://meet.google.com/abc-defg-hij"), false},
           {"no scheme", scripted::addressAnswer("//meet.google.com/abc-defg-hij"), false},
           {"no host", scripted::addressAnswer("https:///abc-defg-hij"), false},
           {"a browser's own page", scripted::addressAnswer("chrome://newtab/"), false},
           {"a blank page", scripted::addressAnswer("about:blank"), false},
           {"another page", scripted::addressAnswer("https://example.org/"), false},
           {"a landing page without a call",
            scripted::addressAnswer("https://meet.google.com/landing"), false},
           {"an empty address", scripted::addressAnswer(""), false},
           {"an address that cannot be read", scripted::codeAnswer(code::failure), false},
           {"no address", scripted::codeAnswer(code::attributeUnsupported), false},
           {"an address beside a failure",
            {{code::cannotComplete, platform::Address{meetAddress}}, 0},
            false},
           {"another type", {{code::success, platform::OtherType()}, 0}, false},
       }) {
    SCOPED_TRACE(row.sentence);
    const AppSample sampled = showing(with(page("p", "", callControls()), "AXURL", row.address));
    EXPECT_EQ(conferencesOf(sampled), row.meeting ? std::vector{meet} : std::vector<Conference>());
    EXPECT_EQ(timesCalled("scan p"), row.meeting ? 1U : 0U)
        << "a page without a meeting is not scanned";
    EXPECT_TRUE(sampled.viewInventoryComplete);
  }
}

TEST_F(PageSampling, ALaunchPageNamesTheMeetingThatItLaunches) {
  // {"meetingUrl":"https://teams.live.com/meet/123456789"}
  const AppSample sampled =
      showing(page("p",
                   "https://teams.microsoft.com/light-meetings/launch?coords="
                   "eyJtZWV0aW5nVXJsIjoiaHR0cHM6Ly90ZWFtcy5saXZlLmNvbS9tZWV0LzEyMzQ1Njc4OSJ9"));
  EXPECT_EQ(conferencesOf(sampled), (std::vector<Conference>{{"teams", "teams:123456789"}}));
}

TEST_F(PageSampling, EveryBrowserAndWebAppShowsPages) {
  for (const char* bundle : {chrome, "com.microsoft.edgemac", "com.apple.Safari", webApp}) {
    SCOPED_TRACE(bundle);
    EXPECT_EQ(conferencesOf(showing(page("p", meetAddress), bundle)), std::vector{meet});
  }
}

TEST_F(PageSampling, TheLaterOfTwoPagesComesFirst) {
  start(7, chrome,
        {window("w1", "",
                {group({page("p1", "https://meet.google.com/aaa-aaaa-aaa")}),
                 group({page("p2", "https://meet.google.com/bbb-bbbb-bbb")})}),
         window("w2", "", {page("p3", "https://meet.google.com/ccc-cccc-ccc")})});
  EXPECT_EQ(conferencesOf(sample(7)), (std::vector<Conference>{{"meet", "meet:bbb-bbbb-bbb"},
                                                               {"meet", "meet:aaa-aaaa-aaa"},
                                                               {"meet", "meet:ccc-cccc-ccc"}}));
}

TEST_F(PageSampling, ADialogInAPageProvesNothing) {
  const Node dialog = with(group({titled(node("", "AXStaticText"), "You left the meeting")}),
                           "AXSubrole", scripted::textAnswer("AXDialog"));
  EXPECT_EQ(showing(page("p", meetAddress, {dialog})).surfaces.at(0).state, CallState::unknown);
  EXPECT_EQ(showing(page("p", "https://teams.microsoft.com/v2/", {dialog}), teamsClient)
                .surfaces.at(0)
                .state,
            CallState::unknown)
      << "nor in a native client that is a web view";
}

TEST_F(PageSampling, AZoomTileInAPageProvesNothing) {
  const Node tile = with(titled(node("", "AXGroup"), "QA, Computer audio unmuted"),
                         "AXRoleDescription", scripted::textAnswer("Video render"));
  start(7, chrome,
        {window("w", "Zoom Meeting", {page("p", "https://zoom.us/j/123456789", {tile})})});
  EXPECT_EQ(sample(7).surfaces.at(0).state, CallState::unknown);
}

// The identity that a Meet call keeps.

TEST_F(PageSampling, ATrackedMeetCallKeepsItsIdentityOnALandingPage) {
  track(7, meet, "w", "p");
  for (const char* path : {"/", "/home", "/landing", "/meet/landing"}) {
    SCOPED_TRACE(path);
    const AppSample sampled =
        showing(page("p", std::string("https://meet.google.com") + path, leftNotice()));
    ASSERT_EQ(conferencesOf(sampled), std::vector{meet});
    EXPECT_EQ(sampled.surfaces[0].state, CallState::left);
  }
}

TEST_F(PageSampling, AnIdentityIsKeptOnlyOnTheCallsOwnSurface) {
  const Node landing = page("p", "https://meet.google.com/landing", callControls());
  struct Row {
    const char* sentence;
    std::function<void(Call&)> change;
  };
  for (const Row& row : std::vector<Row>{
           {"another process", [](Call& call) { call.pid = 8; }},
           {"another launch", [](Call& call) { call.launchedAt = 1.5; }},
           {"another window", [](Call& call) { call.window = "other"; }},
           {"another page", [](Call& call) { call.element = "other"; }},
           {"another provider",
            [](Call& call) {
              call.conference = {"teams", "teams:1"};
            }},
       }) {
    SCOPED_TRACE(row.sentence);
    row.change(track(7, meet, "w", "p"));
    EXPECT_TRUE(showing(landing).surfaces.empty());
    tracker.calls.clear();
  }
}

TEST_F(PageSampling, TwoCallsOnOneSurfaceKeepNoIdentity) {
  track(7, meet, "w", "p");
  track(7, {"meet", "meet:xxx-yyyy-zzz"}, "w", "p");
  EXPECT_TRUE(showing(page("p", "https://meet.google.com/landing")).surfaces.empty());
}

TEST_F(PageSampling, APageThatNamesAnotherMeetingLosesTheOldIdentity) {
  track(7, meet, "w", "p");
  EXPECT_EQ(conferencesOf(showing(page("p", "https://meet.google.com/xxx-yyyy-zzz"))),
            (std::vector<Conference>{{"meet", "meet:xxx-yyyy-zzz"}}));
}

TEST_F(PageSampling, APageThatIsNoLandingPageKeepsNoIdentity) {
  track(7, meet, "w", "p");
  EXPECT_TRUE(showing(page("p", "https://example.org/")).surfaces.empty());
  EXPECT_TRUE(
      showing(with(page("p", ""), "AXURL", scripted::codeAnswer(code::failure))).surfaces.empty());
}

// Native clients that are web views.

TEST_F(PageSampling, APageOfATeamsClientIsTheProvidersWhateverItsAddress) {
  struct Row {
    const char* sentence;
    scripted::Answer address;
    const char* key;
  };
  for (const char* bundle : {teamsClient, "com.microsoft.teams"}) {
    for (const Row& row : std::vector<Row>{
             {"a meeting", scripted::addressAnswer("https://teams.live.com/meet/123456789"),
              "teams:123456789"},
             {"the client's own page", scripted::addressAnswer("https://teams.microsoft.com/v2/"),
              ""},
             {"a meeting of another provider", scripted::addressAnswer(meetAddress), ""},
             {"another page", scripted::addressAnswer("https://example.org/"), ""},
             {"an address that cannot be read", scripted::codeAnswer(code::failure), ""},
             {"no address", scripted::codeAnswer(code::attributeUnsupported), ""},
         }) {
      SCOPED_TRACE(row.sentence);
      const AppSample sampled =
          showing(with(page("p", "", callControls()), "AXURL", row.address), bundle);
      ASSERT_EQ(conferencesOf(sampled), (std::vector<Conference>{{"teams", row.key}}));
      EXPECT_EQ(sampled.surfaces[0].state, CallState::joined);
      EXPECT_EQ(sampled.surfaces[0].element, identifierOf("p"));
      EXPECT_EQ(sampled.surfaces[0].window, identifierOf("w"));
      EXPECT_FALSE(sampled.browser);
    }
  }
}

TEST_F(PageSampling, AWindowOfATeamsClientWithoutAPageGivesNoSurface) {
  start(7, teamsClient, {window("w", "Teams", callControls())});
  EXPECT_TRUE(sample(7).surfaces.empty());
}

}  // namespace
}  // namespace callmonitor
