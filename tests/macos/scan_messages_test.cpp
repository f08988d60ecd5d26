// How many messages a look at a page or at a native client's window sends, and which.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "evidence/label_scan.h"
#include "macos/stepped_desktop.h"

namespace callmonitor::macos {
namespace {

using platform::Element;

struct ScanMessages : SteppedDesktop {
  ScanMessages() { pool = standins::openPool(); }
  ~ScanMessages() override { standins::closePool(pool); }
  void* pool = nullptr;

  static Element firstWindow() {
    return std::get<std::vector<Element>>(
        platform::readAttribute(platform::applicationElement(101, 0.2), "AXWindows").value)[0];
  }

  // Scans the page "p" and gives the attributes that each element was asked for, in order.
  std::map<std::string, Words> asked(const std::string& text, Evidence& evidence) {
    play(text);
    const Element root = std::get<std::vector<Element>>(
        platform::readAttribute(firstWindow(), "AXChildren").value)[0];
    desktop().recordMessages = true;
    evidence = labels(root, /*browser=*/true, false, false, desktop().uptime + 1);
    return recorded();
  }

  // The same for a native client's window "w".
  std::map<std::string, Words> askedNatively(const std::string& text, bool nativeZoomWindow,
                                             bool previewRecovery, Evidence& evidence) {
    play(text);
    const Element root = firstWindow();
    desktop().recordMessages = true;
    evidence =
        labels(root, /*browser=*/false, nativeZoomWindow, previewRecovery, desktop().uptime + 1);
    return recorded();
  }

  static std::map<std::string, Words> recorded() {
    std::map<std::string, Words> attributes;
    for (const std::string& message : desktop().messages) {
      const std::size_t key = message.find(' ') + 1;
      const std::size_t name = message.rfind(' ') + 1;
      EXPECT_TRUE(message.starts_with("copy ")) << message;
      attributes[message.substr(key, name - key - 1)].push_back(message.substr(name));
    }
    return attributes;
  }
};

const Words wholeElement{"AXRole",    "AXSubrole",     "AXTitle", "AXHidden",
                         "AXEnabled", "AXDescription", "AXValue", "AXChildren"};
// Of what a chat or a text field holds nothing is asked but what tells that it is one.
const Words excludedElement{"AXRole",   "AXSubrole", "AXTitle",
                            "AXHidden", "AXEnabled", "AXDescription"};

TEST_F(ScanMessages, APageOfTheWholeBudgetCostsEightMessagesAnElement) {
  // The page, 16 groups, and 99 buttons in each of them: one more than the budget.
  Evidence evidence;
  const auto attributes = asked(R"(
app chrome com.google.Chrome
  window "Standup"
    page p https://meet.google.com/abc-defg-hij
      repeat 16
        group
          repeat 99
            button "Raise hand"
end 1h
)",
                                evidence);
  EXPECT_EQ(evidence.nodes, 1600);
  EXPECT_TRUE(evidence.truncated);
  EXPECT_EQ(attributes.size(), 1600U);
  EXPECT_EQ(desktop().messages.size(), 1600U * 8);
  for (const auto& [key, names] : attributes) EXPECT_EQ(names, wholeElement) << key;
}

TEST_F(ScanMessages, ExcludedElementsAreNotAskedForTheirValueNorTheirChildren) {
  Evidence evidence;
  const auto attributes = asked(R"(
app chrome com.google.Chrome
  window "Standup"
    page p https://meet.google.com/abc-defg-hij
      group chat "Meeting chat"
        repeat 20
          text "Hello"
      textfield field "secret"
      textarea area "secret"
      list people
        repeat 50
          button "Mute"
      log captions "Captions"
        text "Hello"
      group controls
        button leave "Leave call"
end 1h
)",
                                evidence);
  EXPECT_TRUE(evidence.complete);
  std::map<std::string, Words> expected;
  for (const char* key : {"p", "controls", "leave"}) {
    expected["app:101/" + std::string(key)] = wholeElement;
  }
  for (const char* key : {"chat", "field", "area", "people", "captions"}) {
    expected["app:101/" + std::string(key)] = excludedElement;
  }
  EXPECT_EQ(attributes, expected);
}

TEST_F(ScanMessages, AHiddenElementIsAskedNoFurther) {
  Evidence evidence;
  const auto attributes = asked(R"(
app chrome com.google.Chrome
  window "Standup"
    page p https://meet.google.com/abc-defg-hij
      group away hidden
        button "Leave call"
end 1h
)",
                                evidence);
  EXPECT_EQ(attributes.at("app:101/away"), (Words{"AXRole", "AXSubrole", "AXTitle", "AXHidden"}));
  EXPECT_EQ(attributes.size(), 2U);
}

TEST_F(ScanMessages, NoMessageIsSentAfterTheDeadline) {
  Evidence evidence;
  const auto attributes = asked(R"(
app chrome com.google.Chrome
  window "Standup"
    page p https://meet.google.com/abc-defg-hij
      slow AXRole 150ms
      slow AXTitle 150ms
      slow AXValue 1s
      button "Leave call"
end 1h
)",
                                evidence);
  EXPECT_TRUE(evidence.deadline);
  EXPECT_EQ(attributes.size(), 1U);
  EXPECT_EQ(attributes.at("app:101/p"), (Words{"AXRole", "AXSubrole", "AXTitle", "AXHidden",
                                               "AXEnabled", "AXDescription", "AXValue"}))
      << "0.15 + 0.15 + 0.2 s have passed then";
}

// What the words are of an element in a Zoom meeting's window.
Words withRoleDescription(Words words) {
  words.insert(words.begin() + 1, "AXRoleDescription");
  return words;
}

Words withIdentifier(Words words) {
  words.insert(words.begin() + 6, "AXIdentifier");
  return words;
}

constexpr const char* zoomMeeting = R"(
app zoom us.zoom.xos
  window w "Zoom Meeting"
    group tile "QA, Computer audio unmuted" role-description="Video render"
    button leave "Leave"
      fails AXDescription failure
    list people
      button "Mute"
    group away hidden
      button "Mute"
end 1h
)";

TEST_F(ScanMessages, OnlyInAZoomMeetingsWindowElementsAreAskedWhatTheyCallTheirRole) {
  for (const bool nativeZoomWindow : {true, false}) {
    SCOPED_TRACE(nativeZoomWindow ? "a Zoom meeting's window" : "any other window");
    Evidence evidence;
    const auto attributes = askedNatively(zoomMeeting, nativeZoomWindow, false, evidence);
    EXPECT_EQ(evidence.nativeZoomTile, nativeZoomWindow);
    std::map<std::string, Words> expected{
        {"app:101/w", wholeElement},
        {"app:101/tile", wholeElement},
        {"app:101/leave", wholeElement},
        {"app:101/people", excludedElement},
        {"app:101/away", {"AXRole", "AXSubrole", "AXTitle", "AXHidden"}}};
    if (nativeZoomWindow) {
      for (auto& [key, words] : expected) words = withRoleDescription(words);
    }
    EXPECT_EQ(attributes, expected);
    EXPECT_EQ(desktop().messages.size(), nativeZoomWindow ? 3U * 9 + 7 + 5 : 3U * 8 + 6 + 4);
  }
}

constexpr const char* zoomPreview = R"(
app zoom us.zoom.xos
  window w "Zoom"
    button audio identifier="preview-audio-button"
      fails AXDescription failure
    button late identifier="other"
      fails AXDescription cannot-complete
    button video "Video"
    checkbox box
      fails AXDescription failure
end 1h
)";

// The button alone whose description fails as the preview's does is asked what it is.
TEST_F(ScanMessages, OnlyThePreviewsRecoveryAsksAButtonForItsIdentifier) {
  for (const bool recovery : {true, false}) {
    SCOPED_TRACE(recovery ? "with the preview's recovery" : "without it");
    Evidence evidence;
    const auto attributes = askedNatively(zoomPreview, false, recovery, evidence);
    std::map<std::string, Words> expected;
    for (const char* key : {"w", "audio", "late", "video", "box"}) {
      expected["app:101/" + std::string(key)] = wholeElement;
    }
    if (recovery) expected["app:101/audio"] = withIdentifier(wholeElement);
    EXPECT_EQ(attributes, expected);
    EXPECT_EQ(desktop().messages.size(), recovery ? 5U * 8 + 1 : 5U * 8);
  }
}

}  // namespace
}  // namespace callmonitor::macos
