#include "platform/linux/role_map.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::platform {
namespace {

struct Case {
  std::string name;
  AccessibleFacts facts;
  std::string_view role;
  std::string_view subrole;
};

AccessibleFacts plain(std::uint32_t number, std::uint64_t states = 0) {
  AccessibleFacts facts;
  facts.role = number;
  facts.states = states;
  return facts;
}

AccessibleFacts web(std::uint32_t number, std::string_view webRoles) {
  AccessibleFacts facts = plain(number);
  facts.webRoles = webRoles;
  return facts;
}

AccessibleFacts tagged(std::uint32_t number, std::string_view tag) {
  AccessibleFacts facts = plain(number);
  facts.tag = tag;
  return facts;
}

AccessibleFacts topLevel(std::uint32_t number) {
  AccessibleFacts facts = plain(number);
  facts.topLevel = true;
  return facts;
}

AccessibleFacts input(std::uint32_t number, std::string_view type) {
  AccessibleFacts facts = plain(number, state::editable | state::focusable);
  facts.inputType = type;
  return facts;
}

void expectAll(const std::vector<Case>& cases) {
  for (const Case& each : cases) {
    EXPECT_EQ(macRole(each.facts), each.role) << each.name;
    EXPECT_EQ(macSubrole(each.facts), each.subrole) << each.name;
  }
}

TEST(RoleMap, NamesWhatHoldsOtherPeoplesWords) {
  constexpr std::uint64_t typing = state::editable | state::focusable;
  expectAll({
      {"a list", plain(31), "AXList", ""},
      {"a list box", plain(98), "AXList", ""},
      {"a list of terms", plain(121), "AXList", "AXDescriptionList"},
      {"a table or grid", plain(55), "AXTable", ""},
      {"a tree table", plain(66), "AXTable", ""},
      {"a tree", plain(65), "AXOutline", ""},
      {"a quote", plain(105), "AXBlockQuote", ""},
      {"a log", web(111, "log"), "AXGroup", "AXApplicationLog"},
      {"a log by its number alone", plain(111), "AXGroup", "AXApplicationLog"},
      {"a feed, which only the page's word tells", web(39, "feed"), "AXGroup", "AXApplicationFeed"},
      {"a text input of one line", plain(79, typing), "AXTextField", ""},
      {"a text input of several lines", plain(79, typing | state::multiLine), "AXTextArea", ""},
      {"a toolkit's entry", plain(61, typing), "AXTextField", ""},
      {"a toolkit's text view", plain(61, typing | state::multiLine), "AXTextArea", ""},
      {"a password", plain(40), "AXTextField", "AXSecureTextField"},
      {"a search field", input(79, "search"), "AXTextField", "AXSearchField"},
      {"an input that completes by itself", plain(76), "AXTextField", ""},
      {"a terminal", plain(60), "AXTextArea", ""},
      {"an editable section", plain(85, typing | state::multiLine), "AXTextArea", ""},
      {"an editable paragraph", plain(73, typing), "AXTextArea", ""},
      {"a part of what is editable", plain(85, state::editable), "AXGroup", ""},
      {"a section that merely takes the focus", plain(85, state::focusable), "AXGroup", ""},
  });
}

TEST(RoleMap, NamesControls) {
  expectAll({
      {"a button", plain(43), "AXButton", ""},
      {"a button that opens a menu", plain(43, state::hasPopup), "AXPopUpButton", ""},
      {"a toolkit's menu button", plain(129), "AXMenuButton", ""},
      {"a switch of a newer bus", plain(130), "AXCheckBox", "AXSwitch"},
      {"a pressed or unpressed button", plain(62), "AXCheckBox", "AXToggle"},
      {"such a button that opens a menu", plain(62, state::hasPopup), "AXCheckBox", "AXToggle"},
      {"a switch", web(62, "switch"), "AXCheckBox", "AXSwitch"},
      {"a summary opens a section and is no control", tagged(62, "summary"), "AXDisclosureTriangle",
       ""},
      {"a check box", plain(7), "AXCheckBox", ""},
      {"a radio button", plain(44), "AXRadioButton", ""},
      {"a choice", plain(11, state::hasPopup), "AXPopUpButton", ""},
      {"a choice that can be typed", plain(11, state::hasPopup | state::editable), "AXComboBox",
       ""},
      {"a link", plain(88), "AXLink", ""},
      {"a tab", plain(37), "AXRadioButton", "AXTabButton"},
      {"a slider", plain(51), "AXSlider", ""},
      {"a stepper", plain(52), "AXIncrementor", ""},
      {"a menu item", plain(35), "AXMenuItem", ""},
      {"a checked menu item", plain(8), "AXMenuItem", ""},
      {"a radio menu item", plain(45), "AXMenuItem", ""},
  });
}

TEST(RoleMap, NamesNoticesAndTheirContainers) {
  expectAll({
      {"a heading", plain(83), "AXHeading", ""},
      {"a text leaf", plain(116), "AXStaticText", ""},
      {"a toolkit's label", plain(29), "AXStaticText", ""},
      {"a page's alert", web(101, "alert"), "AXGroup", "AXApplicationAlert"},
      {"a page's alert dialog is no alert", web(2, "alertdialog"), "AXGroup",
       "AXApplicationAlertDialog"},
      {"a page's dialog", web(16, "dialog"), "AXGroup", "AXApplicationDialog"},
      {"a dialog element", plain(16), "AXGroup", "AXApplicationDialog"},
      {"a dialog window", topLevel(16), "AXWindow", "AXDialog"},
      {"a status", web(54, "status"), "AXGroup", "AXApplicationStatus"},
      {"a timer", web(115, "timer"), "AXGroup", "AXApplicationTimer"},
      {"a marquee", web(112, "marquee"), "AXGroup", "AXApplicationMarquee"},
  });
}

TEST(RoleMap, NamesWindowsPagesAndContainers) {
  expectAll({
      {"an application", plain(75), "AXApplication", ""},
      {"a frame", topLevel(23), "AXWindow", "AXStandardWindow"},
      {"a window", topLevel(69), "AXWindow", "AXStandardWindow"},
      {"a file chooser", topLevel(19), "AXWindow", "AXDialog"},
      {"a page", plain(95), "AXWebArea", ""},
      {"a page in which a person types stays a page", plain(95, state::editable | state::focusable),
       "AXWebArea", ""},
      {"the frame around an inner page", plain(28), "AXGroup", ""},
      {"a document within a page", plain(82), "AXGroup", ""},
      {"a panel", plain(39), "AXGroup", ""},
      {"a landmark", plain(110), "AXGroup", ""},
      {"an article", plain(109), "AXGroup", "AXDocumentArticle"},
      {"a list item", plain(32), "AXGroup", ""},
      {"a row", plain(90), "AXRow", ""},
      {"a cell", plain(56), "AXCell", ""},
      {"a tree's item", plain(91), "AXRow", "AXOutlineRow"},
      {"an image", plain(27), "AXImage", ""},
      {"a role beyond the interface's own", plain(9999), "AXUnknown", ""},
      {"a role beyond the interface's own in which a person types",
       plain(9999, state::editable | state::focusable), "AXTextArea", ""},
  });
}

TEST(RoleMap, FindsAWebRoleAmongSeveralWords) {
  EXPECT_EQ(macSubrole(web(39, "region feed")), "AXApplicationFeed");
  EXPECT_EQ(macSubrole(web(39, "feedback")), "") << "only whole words count";
  EXPECT_EQ(macSubrole(web(31, "list feed")), "") << "a word that was passed over for another role";
}

TEST(NameIsValue, HoldsForTextsThatAreShown) {
  EXPECT_TRUE(nameIsValue(116));
  EXPECT_TRUE(nameIsValue(29));
  EXPECT_FALSE(nameIsValue(83)) << "a heading is named by its text";
  EXPECT_FALSE(nameIsValue(43));
}

TEST(StandingOf, LeavesThePromptsOfABrowserToTheWindowServer) {
  for (const std::uint32_t number : {23U, 69U, 16U, 19U, 9U, 22U}) {
    EXPECT_EQ(standingOf(number), Standing::window) << number;
  }
  EXPECT_EQ(standingOf(2), Standing::perhapsWindow) << "a prompt, or a toolkit's message dialog";
  EXPECT_EQ(standingOf(101), Standing::part);
}

}  // namespace
}  // namespace callmonitor::platform
