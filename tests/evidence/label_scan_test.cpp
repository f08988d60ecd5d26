// What a scan gathers from a tree and what it keeps out.
#include "evidence/label_scan.h"

#include <gtest/gtest.h>

#include "support/label_expectation.h"

namespace callmonitor {
namespace {

using test::button;
using test::described;
using test::expectLabels;
using test::heading;
using test::holding;
using test::part;
using test::Part;
using test::ScanCase;
using test::scanData;
using test::ScanSettings;
using test::subrole;
using test::window;
using test::with;

const std::string chatTitle = "Chat | Meeting with QA | Microsoft Teams";

TEST(LabelScan, CollectsTheLabelsOfEnabledCallControls) {
  const auto disabled = [](Part control) { return with(std::move(control), "AXEnabled", false); };
  expectLabels({
      {"a button's title and then its description",
       described(button("Leave"), "Leave call"),
       {},
       {"Leave", "Leave call"},
       {}},
      {"a missing description is an empty label", button("Leave"), {}, {"Leave", ""}, {}},
      {"a missing title is an empty label",
       described(button(""), "Leave call"),
       {},
       {"", "Leave call"},
       {}},
      {"a button without labels gives two empty ones", button(""), {}, {"", ""}, {}},
      {"a check box", part("AXCheckBox", "Mute"), {}, {"Mute", ""}, {}},
      {"a menu button", part("AXMenuButton", "Mute"), {}, {"Mute", ""}, {}},
      {"a menu item is no control", part("AXMenuItem", "Mute"), {}, {}, {}},
      {"a link is no control", part("AXLink", "Join"), {}, {}, {}},
      {"a radio button is no control", part("AXRadioButton", "Mute"), {}, {}, {}},
      {"a pop-up button is no control", part("AXPopUpButton", "Mute"), {}, {}, {}},
      {"a text is no control", part("AXStaticText", "Mute"), {}, {}, {}},
      {"roles are compared exactly", part("axbutton", "Mute"), {}, {}, {}},
      {"a disabled button", disabled(button("Leave")), {}, {}, {}},
      {"below a disabled button an enabled one counts",
       holding(disabled(button("Leave")), {button("Mute")}),
       {},
       {"Mute", ""},
       {}},
      {"labels stay as they were read",
       button("  Leave   Call (⌘ + W) "),
       {},
       {"  Leave   Call (⌘ + W) ", ""},
       {}},
      {"a button's value is no control",
       with(button("Leave"), "AXValue", "Mute"),
       {},
       {"Leave", ""},
       {}},
      {"a title given as another type is empty",
       with(button(""), "AXTitle", true),
       {},
       {"", ""},
       {}},
  });
}

TEST(LabelScan, VisitsTheLastChildFirst) {
  expectLabels({
      {"siblings in reverse",
       window({button("1"), button("2"), button("3")}),
       {},
       {"3", "", "2", "", "1", ""},
       {}},
      {"a later branch to its end first",
       window({holding(button("1"), {button("2")}), holding(button("3"), {button("4")})}),
       {},
       {"3", "", "4", "", "1", "", "2", ""},
       {}},
      {"notices in the same order", window({heading("1"), heading("2")}), {}, {}, {"2", "1"}},
  });
}

TEST(LabelScan, KeepsOtherPeoplesWordsOut) {
  const Part leave = button("Leave call");
  const Part group = part("AXGroup");
  std::vector<ScanCase> cases = {
      {"a button beside the chat counts, one inside does not",
       window({holding(part("AXGroup", "Meeting chat"), {button("Mute")}), leave}),
       {},
       {"Leave call", ""},
       {}},
      {"a container named by its description",
       window({holding(described(group, "In-call messages"), {leave})}),
       {},
       {},
       {}},
      {"deep inside the chat",
       window({holding(part("AXGroup", "Chat"), {holding(group, {holding(group, {leave})})})}),
       {},
       {},
       {}},
      {"a button that names a chat", window({button("Unmute this chat message")}), {}, {}, {}},
      {"a button inside a chat list",
       window({holding(part("AXList", "Chat"), {button("Unmute this chat message")})}),
       {},
       {},
       {}},
      {"an ending sentence inside the chat",
       window({holding(part("AXGroup", "Chat"), {heading("You left the meeting")})}),
       {},
       {},
       {}},
      {"a lost connection inside the chat",
       window({holding(part("AXGroup", "Chat"), {part("AXStaticText", "Reconnecting...")})}),
       {},
       {},
       {}},
      {"a heading that names a chat", window({heading("In-call messages")}), {}, {}, {}},
      {"a text field in the shape of a control",
       window({part("AXTextField", "Leave call")}),
       {},
       {},
       {}},
      {"a list below a notice container",
       window({holding(heading("You left"), {holding(part("AXList"), {heading("x")})})}),
       {},
       {},
       {"You left"}},
      {"a title that is no chat",
       window({holding(part("AXGroup", "Chatter"), {leave})}),
       {},
       {"Leave call", ""},
       {}},
      {"a value does not name a chat",
       window({holding(with(group, "AXValue", "chat"), {leave})}),
       {},
       {"Leave call", ""},
       {}},
  };
  for (const std::string role :
       {"AXTextArea", "AXTextField", "AXList", "AXTable", "AXOutline", "AXBlockQuote"}) {
    cases.push_back(
        {"a container by its role", window({holding(part(role), {leave})}), {}, {}, {}});
  }
  for (const std::string name : {"AXApplicationLog", "AXApplicationFeed"}) {
    cases.push_back({"a container by its subrole",
                     window({holding(subrole(group, name), {leave})}),
                     {},
                     {},
                     {}});
  }
  expectLabels(cases);
}

TEST(LabelScan, NeverExcludesThePageItself) {
  const Part page = holding(part("AXWebArea", chatTitle), {button("Leave call")});
  const Part inner = window({page});
  expectLabels({
      {"a page titled chat is scanned", page, test::browser, {"Leave call", ""}, {}},
      {"a log that is the page is scanned",
       subrole(holding(part("AXWebArea"), {button("Leave call")}), "AXApplicationLog"),
       test::browser,
       {"Leave call", ""},
       {}},
      {"in a native client it is not", page, test::native, {}, {}},
      {"a root that is no page is not",
       holding(part("AXGroup", chatTitle), {button("Leave call")}),
       test::browser,
       {},
       {}},
      {"a page inside the root is not", holding(part("AXWebArea"), {page}), test::browser, {}, {}},
  });
  EXPECT_TRUE(test::scanLive(with(page, "AXHidden", true), test::browser).controls.empty())
      << "a hidden page is skipped";
}

TEST(LabelScan, SkipsHiddenSubtrees) {
  const auto hidden = [](Part element) { return with(std::move(element), "AXHidden", true); };
  expectLabels({
      {"a hidden button", window({hidden(button("Leave")), button("Mute")}), {}, {"Mute", ""}, {}},
      {"a button below a hidden group",
       window({hidden(holding(part("AXGroup"), {button("Leave")}))}),
       {},
       {},
       {}},
      {"a hidden heading", window({hidden(heading("You left the meeting"))}), {}, {}, {}},
      {"a hidden root", hidden(window({button("Leave")})), {}, {}, {}},
      {"another type hides nothing",
       window({with(button("Leave"), "AXHidden", "true")}),
       {},
       {"Leave", ""},
       {}},
  });
}

struct TileCase {
  std::string_view sentence;
  Part tile;
  ScanSettings settings;
  bool seen;
};

TEST(LabelScan, SeesParticipantTilesInANativeZoomWindow) {
  const auto tile = [](std::string title, std::string roleDescription = "Video render") {
    return with(part("AXTabGroup", std::move(title)), "AXRoleDescription",
                std::move(roleDescription));
  };
  const Part plain = tile("QA, Computer audio unmuted");
  const TileCase cases[] = {
      {"a tile by its title", plain, test::zoomWindow, true},
      {"a tile by its description", described(tile(""), "QA, computer audio muted, video on"),
       test::zoomWindow, true},
      {"white space and capitals do not matter",
       tile(" QA,  Computer Audio MUTED ", " VIDEO  render"), test::zoomWindow, true},
      {"a disabled tile", with(plain, "AXEnabled", false), test::zoomWindow, true},
      {"the same in a browser", plain, test::browser, false},
      {"in a browser with a Zoom window",
       plain,
       {.browser = true, .nativeZoomWindow = true},
       false},
      {"in another window", plain, test::native, false},
      {"another role description", tile("QA, Computer audio unmuted", "video"), test::zoomWindow,
       false},
      {"a longer role description", tile("QA, Computer audio unmuted", "video render view"),
       test::zoomWindow, false},
      {"no role description", part("AXTabGroup", "QA, Computer audio unmuted"), test::zoomWindow,
       false},
      {"another title", tile("QA"), test::zoomWindow, false},
      {"a title with words behind", tile("QA, Computer audio unmuted, Video on, pinned"),
       test::zoomWindow, false},
      {"a hidden tile", with(plain, "AXHidden", true), test::zoomWindow, false},
      {"a tile in a list", holding(part("AXList"), {plain}), test::zoomWindow, false},
      {"a tile beside its description", described(plain, "pinned"), test::zoomWindow, false},
  };
  for (const TileCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(test::scanLive(window({row.tile}), row.settings).nativeZoomTile, row.seen);
    EXPECT_EQ(scanData(window({row.tile}), row.settings).nativeZoomTile, row.seen);
  }
}

}  // namespace
}  // namespace callmonitor
