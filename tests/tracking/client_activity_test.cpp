// The look at the application in front: where it stops, what it writes, what it remembers.
#include "tracking/client_activity.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "evidence/label_scan.h"
#include "support/desktop_builder.h"
#include "support/emitted_records.h"

namespace callmonitor {
namespace {

using namespace support;
namespace code = platform::code;

constexpr const char* chrome = "com.google.Chrome";
constexpr const char* zoom = "us.zoom.xos";
constexpr const char* teamsClient = "com.microsoft.teams2";

struct ClientActivity : testing::Test {
  ClientActivityMemory memory;
  WriterGates gates;
  TakenScans taken;

  ClientActivity() { scripted::reset(); }

  // Puts an application in front whose focused window is this one.
  void front(std::int32_t pid, const std::string& bundle, const Node& focused) {
    quit(pid);
    start(pid, bundle, {focused});
    desktop().elements[scripted::applicationKey(pid)].insert_or_assign(
        "AXFocusedWindow", scripted::elementAnswer(focused.key));
    desktop().front = pid;
  }

  // One look, later than the gates of the looks before, on a fresh record of calls.
  std::vector<Json> look(bool trusted = true) {
    desktop().uptime += 100;
    desktop().calls.clear();
    return recordsWrittenBy([&] { reportClientActivity(memory, gates, taken, trusted); });
  }

  // The stage that one look stops at; fails the test where it writes anything else.
  std::string stageOf(bool trusted = true) {
    const std::vector<Json> records = look(trusted);
    EXPECT_EQ(records.size(), 1U);
    return records.at(0).value("stage", "");
  }

  // The client record of a look that gets to its end.
  Json client() {
    const std::vector<Json> records = look();
    EXPECT_EQ(records.size(), 2U);
    EXPECT_EQ(records.at(0).value("stage", ""), "complete") << "the scan record comes first";
    EXPECT_EQ(kindOf(records.at(1)), "client");
    return records.at(1);
  }
};

Node zoomWindow(const std::string& title, std::vector<Node> children) {
  return window("w", title, std::move(children));
}

TEST_F(ClientActivity, WithoutTrustNothingIsLookedAt) {
  front(7, chrome, window("w", "Standup", {page("p", meetAddress, callControls())}));
  const std::vector<Json> records = look(/*trusted=*/false);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["stage"], "untrusted");
  EXPECT_EQ(keysOf(records[0]), (std::set<std::string>{"type", "version", "stage", "observedAt"}));
  EXPECT_TRUE(desktop().calls.empty());
}

TEST_F(ClientActivity, NoMeetingClientInFrontStopsTheLookBeforeItIsOpened) {
  EXPECT_EQ(stageOf(), "no-front-provider") << "nothing in front";
  for (const char* bundle : {"org.example.editor", "com.google.Chrome.app.invalid", ""}) {
    SCOPED_TRACE(bundle);
    front(7, bundle, window("w", "Notes"));
    EXPECT_EQ(stageOf(), "no-front-provider");
    EXPECT_EQ(timesCalled("open 7"), 0U);
  }
  desktop().applications.back().bundleIdentifier.reset();
  EXPECT_EQ(stageOf(), "no-front-provider") << "an application without a bundle identifier";
}

TEST_F(ClientActivity, WithoutAFocusedWindowTheProviderOfTheBundleIsNamed) {
  struct Row {
    const char* name;
    std::string bundle;
    scripted::Answer focused;
    std::optional<std::string> provider;
  };
  const Row rows[] = {
      {"a failure", zoom, scripted::codeAnswer(code::cannotComplete), "zoom"},
      {"no value", teamsClient, scripted::codeAnswer(code::noValue), "teams"},
      {"success with nothing", zoom, {{code::success, {}}, 0}, "zoom"},
      {"not an element", zoom, scripted::textAnswer("w"), "zoom"},
      {"a browser has no provider of its own", chrome, scripted::codeAnswer(code::failure), {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    front(7, row.bundle, window("w", "Zoom Meeting"));
    desktop().elements[scripted::applicationKey(7)].insert_or_assign("AXFocusedWindow",
                                                                     row.focused);
    const std::vector<Json> records = look();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0]["stage"], "no-focused-window");
    EXPECT_EQ(records[0].contains("provider"), row.provider.has_value());
    EXPECT_EQ(records[0].value("provider", ""), row.provider.value_or(""));
    EXPECT_FALSE(records[0].contains("nodes"));
  }
}

TEST_F(ClientActivity, ABrowserWithoutAMeetingPageHasNoProviderSurface) {
  const std::vector<Node> pages[] = {
      {},
      {page("p", "https://example.org/", callControls())},
      {page("p", "http://meet.google.com/abc-defg-hij", callControls())},
      {page("p", "", callControls())},
  };
  for (const std::vector<Node>& shown : pages) {
    front(7, chrome, window("w", "News", shown));
    const std::vector<Json> records = look();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0]["stage"], "no-provider-surface");
    EXPECT_FALSE(records[0].contains("provider"));
  }
}

TEST_F(ClientActivity, ABrowserIsReportedUnderTheMeetingOfItsPage) {
  front(7, chrome, window("w", "Standup", {page("p", meetAddress, callControls(true))}));
  const Json record = client();
  EXPECT_EQ(record["provider"], "meet");
  EXPECT_EQ(record["key"], meetKey);
  EXPECT_EQ(record["pid"], 7);
  EXPECT_EQ(record["applicationBundleId"], chrome);
  EXPECT_EQ(record["mediaActive"], true);
  EXPECT_EQ(record["lobby"], false);
}

TEST_F(ClientActivity, AWebAppIsABrowserPass) {
  front(7, webApp, window("w", "Standup", {page("p", meetAddress, lobbyControls())}));
  const Json record = client();
  EXPECT_EQ(record["key"], meetKey) << "the page's address, not a lobby key";
  EXPECT_EQ(record["lobby"], true);
  EXPECT_TRUE(memory.lobbyRoots.empty());
}

TEST_F(ClientActivity, TheFirstPageWithAnyIdentityDecidesALandingPageToo) {
  // The later sibling is visited first.
  front(7, chrome,
        window("w", "Meet",
               {page("call", meetAddress, callControls(true)),
                page("home", "https://meet.google.com/landing", {})}));
  EXPECT_EQ(client()["key"], "meet:meet.google.com");
}

TEST_F(ClientActivity, AnAddressGivenAsTextIsAnAddress) {
  front(7, chrome,
        window("w", "Meet",
               {with(page("p", "", callControls()), "AXURL", scripted::textAnswer(meetAddress))}));
  EXPECT_EQ(client()["key"], meetKey);
}

TEST_F(ClientActivity, ANativeClientIsReportedUnderItsProcess) {
  front(42, zoom, zoomWindow("Zoom Workplace", {button("Join")}));
  const Json record = client();
  EXPECT_EQ(record["key"], "zoom:pid-42");
  EXPECT_EQ(record["mediaActive"], false) << "a client with neither media nor lobby still counts";
  EXPECT_EQ(record["lobby"], false);
}

TEST_F(ClientActivity, MediaCountsOnlyWhereTheCallIsJoined) {
  front(42, zoom, zoomWindow("Zoom Meeting", {button("Mute"), button("Stop Video")}));
  EXPECT_EQ(client()["mediaActive"], false) << "no way out is no call";
  front(42, zoom,
        zoomWindow("Zoom Meeting", {button("Mute"), button("Stop Video"), button("Leave")}));
  EXPECT_EQ(client()["mediaActive"], true);
}

TEST_F(ClientActivity, ALobbyKeepsItsKeyWhileItsRootShowsIt) {
  const std::vector<Node> preview{button("Audio"), button("Video"), button("Join")};
  front(42, zoom, window("w1", "Preview", preview));
  const std::string first = client()["key"];
  EXPECT_TRUE(first.starts_with("zoom:lobby-")) << first;
  EXPECT_EQ(first.size(), std::string("zoom:lobby-").size() + 36);
  EXPECT_EQ(client()["key"], first) << "the same root in the next look";

  front(42, zoom, window("w2", "Preview", preview));
  const std::string second = client()["key"];
  EXPECT_NE(second, first) << "another root is another lobby";

  front(42, zoom, window("w2", "Preview", {}));
  EXPECT_EQ(client()["key"], "zoom:pid-42");
  EXPECT_TRUE(memory.lobbyRoots.empty()) << "a lobby that is over is forgotten";
  front(42, zoom, window("w2", "Preview", preview));
  EXPECT_NE(client()["key"], second);
}

TEST_F(ClientActivity, ALookThatDoesNotGetThereLeavesTheLobbyAlone) {
  front(42, zoom, window("w", "Preview", {button("Audio"), button("Video"), button("Join")}));
  const std::string key = client()["key"];
  desktop().front.reset();
  EXPECT_EQ(stageOf(), "no-front-provider");
  EXPECT_EQ(stageOf(/*trusted=*/false), "untrusted");
  desktop().front = 42;
  desktop().elements["w"]["AXRole"] = scripted::codeAnswer(code::cannotComplete);
  EXPECT_EQ(stageOf(), "incomplete");
  desktop().elements["w"]["AXRole"] = scripted::textAnswer("AXWindow");
  EXPECT_EQ(client()["key"], key);
}

TEST_F(ClientActivity, AnIncompleteScanStopsTheLookWithItsEvidence) {
  Node broken = button("Leave call");
  broken.attributes["AXRole"] = scripted::codeAnswer(code::failure);
  front(7, chrome, window("w", "Standup", {page("p", meetAddress, {broken})}));
  const std::vector<Json> records = look();
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["stage"], "incomplete");
  EXPECT_EQ(records[0]["provider"], "meet");
  EXPECT_EQ(records[0]["failedNodes"], 1);
  EXPECT_EQ(records[0]["failedAttributes"], Json::array({"AXRole:-25200"}));
}

TEST_F(ClientActivity, ThePreviewOfZoomGetsItsAudioButtonBack) {
  Node audio = with(button("Audio"), "AXDescription", scripted::codeAnswer(code::failure));
  front(42, zoom, window("w", "Preview", {audio, button("Video"), button("Join")}));
  const std::vector<Json> records = look();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0]["failedAttributes"], nullptr);
  EXPECT_EQ(records[0]["failedControlHints"].size(), 1U);
  EXPECT_EQ(records[1]["lobby"], true);
}

TEST_F(ClientActivity, ATileCountsInAWindowTitledZoomMeetingOnly) {
  const Node tile = with(titled(node("", "AXGroup"), "QA, Computer audio unmuted"),
                         "AXRoleDescription", scripted::textAnswer("Video render"));
  const std::vector<Node> toggles{tile, button("Mute"), button("Stop Video")};
  front(42, zoom, zoomWindow("Zoom   Meeting", toggles));
  EXPECT_EQ(client()["mediaActive"], true);
  front(42, zoom, zoomWindow("Zoom Webinar", toggles));
  EXPECT_EQ(client()["mediaActive"], false);
}

TEST_F(ClientActivity, AWebViewClientIsJudgedByThePageThatSaysMost) {
  const Node plain = page("plain", "https://teams.microsoft.com/v2/", {});
  const Node lobby = page("lobby", "https://teams.microsoft.com/v2/", lobbyControls());
  // A title that would hide a window's labels does not hide a page's.
  const Node call = titled(page("call", "https://teams.microsoft.com/v2/", callControls(true)),
                           "Chat | Meeting with QA | Microsoft Teams");
  front(9, teamsClient, window("w", "Teams", {plain, lobby, call}));
  EXPECT_EQ(client()["mediaActive"], true) << "the joined one";
  EXPECT_EQ(client()["key"], "teams:pid-9");

  front(9, teamsClient, window("w", "Teams", {lobby, plain}));
  const Json waiting = client();
  EXPECT_EQ(waiting["lobby"], true) << "else the one with a lobby";
  EXPECT_EQ(memory.lobbyRoots.at(9).root, scripted::element("w")) << "the window keeps the key";

  Node cut = lobby;
  cut.children.push_back(with(node("", "AXGroup"), "AXRole", scripted::codeAnswer(code::failure)));
  front(9, teamsClient, window("w", "Teams", {cut, plain}));
  EXPECT_EQ(client()["lobby"], false) << "a page that was not read whole proves no lobby";

  Node broken = plain;
  broken.attributes["AXDescription"] = scripted::codeAnswer(code::failure);
  broken.children = {with(node("", "AXGroup"), "AXRole", scripted::codeAnswer(code::failure))};
  front(9, teamsClient, window("w", "Teams", {plain, broken}));
  EXPECT_EQ(stageOf(), "incomplete") << "else the first in order, complete or not";
}

TEST_F(ClientActivity, AWebViewClientWithoutPagesIsScannedAsAWindow) {
  front(9, teamsClient, window("w", "Teams", callControls(true)));
  EXPECT_EQ(client()["mediaActive"], true);
  EXPECT_EQ(callsAfter("scan "), std::vector<std::string>{"w"});
}

TEST_F(ClientActivity, OneDeadlineCoversTheSearchAndEveryScan) {
  // Reading the first of the two takes longer than half a second.
  Node slow = page("slow", "https://teams.microsoft.com/v2/", lobbyControls());
  slow.attributes["AXTitle"].delay = 0.19;
  slow.attributes["AXTitle"].reading = {code::success, std::string("Slow")};
  Node slower = slow;
  slower.key = "slower";
  slower.attributes["AXSubrole"] = scripted::textAnswer("");
  slower.attributes["AXSubrole"].delay = 0.19;
  slower.attributes["AXDescription"] = scripted::textAnswer("");
  slower.attributes["AXDescription"].delay = 0.19;
  front(9, teamsClient, window("w", "Teams", {slow, slower}));
  const double before = desktop().uptime + 100;
  EXPECT_EQ(stageOf(), "incomplete");
  EXPECT_LT(desktop().uptime, before + 0.5 + 0.2) << "half a second and one message at most";
}

TEST_F(ClientActivity, TheDeadlineCoversTheAddressesToo) {
  std::vector<Node> pages;
  for (int i = 0; i < 12; ++i) {
    pages.push_back(page("p" + std::to_string(i), "https://news.example.org/", {}));
    pages.back().attributes["AXURL"].delay = 0.19;
  }
  front(7, chrome, window("w", "News", pages));
  const double before = desktop().uptime + 100;
  EXPECT_EQ(stageOf(), "no-provider-surface");
  EXPECT_LT(desktop().uptime, before + 0.5 + 0.2) << "half a second and one message at most";
}

TEST_F(ClientActivity, TheDeadlineCoversTheTitleOfAWindowThatIsSearchedInVain) {
  Node slow =
      window("w", "Teams", {node("g", "AXGroup"), node("h", "AXGroup"), node("i", "AXGroup")});
  for (Node& child : slow.children) child.attributes["AXRole"].delay = 0.19;
  slow.attributes["AXTitle"].delay = 0.19;
  front(9, teamsClient, slow);
  const double before = desktop().uptime + 100;
  EXPECT_EQ(stageOf(), "incomplete");
  EXPECT_LT(desktop().uptime, before + 0.5 + 0.2) << "half a second and one message at most";
}

TEST_F(ClientActivity, AScanOfTheSameTickIsNotTakenAgain) {
  front(7, chrome, window("w", "Standup", {page("p", meetAddress, {})}));
  Evidence evidence;
  evidence.controls = {"Leave call", "Turn off microphone", "Turn off camera"};
  taken = {{{.root = scripted::element("p"), .browser = true}, evidence}};
  EXPECT_EQ(client()["mediaActive"], true);
  EXPECT_TRUE(callsAfter("scan ").empty());

  taken[0].evidence.complete = false;
  EXPECT_EQ(client()["mediaActive"], false) << "an unfinished scan is taken again";
  taken[0].evidence.complete = true;
  taken[0].request.browser = false;
  EXPECT_EQ(client()["mediaActive"], false) << "so is a scan that was taken in another way";
  EXPECT_EQ(callsAfter("scan "), std::vector<std::string>{"p"});
}

}  // namespace
}  // namespace callmonitor
