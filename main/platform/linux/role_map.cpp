// The table, and the few cases where state or attributes decide between two rows.
#include "platform/linux/role_map.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace callmonitor::platform {
namespace {

struct Row {
  std::uint32_t role;
  std::string_view macRole;
  std::string_view macSubrole{};
};

// Ascending by role number.
constexpr std::array rows{
    Row{role::alert, "AXGroup", "AXApplicationAlertDialog"},
    Row{6, "AXImage"},                     // canvas
    Row{7, "AXCheckBox"},                  // check box
    Row{8, "AXMenuItem"},                  // check menu item
    Row{10, "AXCell"},                     // column header
    Row{role::comboBox, "AXPopUpButton"},  // see macRole for one that can be typed into
    Row{12, "AXDateTimeArea"},             // date editor
    Row{role::dialog, "AXGroup", "AXApplicationDialog"},
    Row{role::frame, "AXWindow", "AXStandardWindow"},
    Row{26, "AXImage"},  // icon
    Row{27, "AXImage"},  // image
    Row{28, "AXGroup"},  // internal frame (an iframe around its page)
    Row{role::label, "AXStaticText"},
    Row{31, "AXList"},                            // list
    Row{32, "AXGroup"},                           // list item
    Row{33, "AXMenu"},                            // menu
    Row{34, "AXMenuBar"},                         // menu bar
    Row{35, "AXMenuItem"},                        // menu item
    Row{37, "AXRadioButton", "AXTabButton"},      // page tab
    Row{38, "AXTabGroup"},                        // page tab list
    Row{role::panel, "AXGroup"},                  // panel
    Row{40, "AXTextField", "AXSecureTextField"},  // password text
    Row{41, "AXMenu"},                            // popup menu
    Row{42, "AXProgressIndicator"},               // progress bar
    Row{role::pushButton, "AXButton"},            // see macRole for buttons that open a menu
    Row{44, "AXRadioButton"},                     // radio button
    Row{45, "AXMenuItem"},                        // radio menu item
    Row{47, "AXCell"},                            // row header
    Row{48, "AXScrollBar"},                       // scroll bar
    Row{49, "AXGroup"},                           // scroll pane (also a tab's panel)
    Row{50, "AXSplitter"},                        // separator
    Row{51, "AXSlider"},                          // slider
    Row{52, "AXIncrementor"},                     // spin button
    Row{54, "AXGroup", "AXApplicationStatus"},    // status bar
    Row{55, "AXTable"},                           // table (also a grid)
    Row{56, "AXCell"},                            // table cell
    Row{57, "AXCell"},                            // table column header
    Row{58, "AXCell"},                            // table row header
    Row{60, "AXTextArea"},                        // terminal
    Row{role::text, "AXTextField"},               // see macRole for several lines
    Row{role::toggleButton, "AXCheckBox", "AXToggle"},
    Row{63, "AXToolbar"},                          // tool bar
    Row{64, "AXGroup", "AXUserInterfaceTooltip"},  // tool tip
    Row{65, "AXOutline"},                          // tree
    Row{66, "AXTable"},                            // tree table
    Row{role::window, "AXWindow", "AXStandardWindow"},
    Row{73, "AXGroup"},                // paragraph
    Row{75, "AXApplication"},          // application
    Row{76, "AXTextField"},            // autocomplete
    Row{role::entry, "AXTextField"},   // see macRole for several lines
    Row{83, "AXHeading"},              // heading
    Row{88, "AXLink"},                 // link
    Row{90, "AXRow"},                  // table row
    Row{91, "AXRow", "AXOutlineRow"},  // tree item
    Row{role::documentWeb, "AXWebArea"},
    Row{97, "AXGroup", "AXDocumentNote"},         // comment
    Row{98, "AXList"},                            // list box
    Row{101, "AXGroup", "AXApplicationAlert"},    // notification (a page's alert)
    Row{103, "AXLevelIndicator"},                 // level bar
    Row{105, "AXBlockQuote"},                     // block quote
    Row{109, "AXGroup", "AXDocumentArticle"},     // article
    Row{111, "AXGroup", "AXApplicationLog"},      // log
    Row{112, "AXGroup", "AXApplicationMarquee"},  // marquee
    Row{113, "AXGroup", "AXDocumentMath"},        // math
    Row{115, "AXGroup", "AXApplicationTimer"},    // timer
    Row{role::staticText, "AXStaticText"},
    Row{121, "AXList", "AXDescriptionList"},  // description list
    Row{129, "AXMenuButton"},                 // push button that opens a menu
    Row{130, "AXCheckBox", "AXSwitch"},       // switch (newer buses; else a toggle button)
};

static_assert(std::is_sorted(rows.begin(), rows.end(), [](const Row& one, const Row& other) {
  return one.role < other.role;
}));

// Roles of the bus end here; above the table's rows, what is not listed is a plain container.
constexpr std::uint32_t lastRole = 131;

// Page roles that the bus folds into a number of wider meaning.
struct WebRole {
  std::uint32_t role;
  std::string_view word;
  std::string_view macSubrole;
};
constexpr std::array webRoles{
    WebRole{role::panel, "feed", "AXApplicationFeed"},
    WebRole{role::toggleButton, "switch", "AXSwitch"},
};

const Row* rowOf(std::uint32_t number) {
  const auto* found =
      std::lower_bound(rows.begin(), rows.end(), number,
                       [](const Row& row, std::uint32_t wanted) { return row.role < wanted; });
  return found != rows.end() && found->role == number ? found : nullptr;
}

bool has(const AccessibleFacts& facts, std::uint64_t bits) {
  return (facts.states & bits) == bits;
}

bool hasWord(std::string_view words, std::string_view wanted) {
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    if (words.substr(0, end) == wanted) return true;
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return false;
}

}  // namespace

std::string_view macRole(const AccessibleFacts& facts) {
  if (facts.topLevel && standingOf(facts.role) != Standing::part) return "AXWindow";
  const Row* row = rowOf(facts.role);
  const std::string_view plain =
      row != nullptr ? row->macRole : (facts.role < lastRole ? "AXGroup" : "AXUnknown");
  switch (facts.role) {
    case role::pushButton:
      return has(facts, state::hasPopup) ? "AXPopUpButton" : plain;
    case role::toggleButton:
      return facts.tag == "summary" ? "AXDisclosureTriangle" : plain;
    case role::comboBox:
      return has(facts, state::editable) ? "AXComboBox" : plain;
    case role::entry:
    case role::text:
      return has(facts, state::multiLine) ? "AXTextArea" : plain;
    default:
      break;
  }
  // Something in which a person types, whatever the page or a newer bus calls it.
  if ((plain == "AXGroup" || plain == "AXUnknown") &&
      has(facts, state::editable | state::focusable))
    return "AXTextArea";
  return plain;
}

std::string_view macSubrole(const AccessibleFacts& facts) {
  if (facts.topLevel && standingOf(facts.role) != Standing::part) {
    return facts.role == role::frame || facts.role == role::window ? "AXStandardWindow"
                                                                   : "AXDialog";
  }
  for (const WebRole& each : webRoles) {
    if (each.role == facts.role && hasWord(facts.webRoles, each.word)) return each.macSubrole;
  }
  if (facts.role == role::toggleButton && facts.tag == "summary") return "";
  if (facts.role == role::entry &&
      (facts.inputType == "search" || hasWord(facts.webRoles, "searchbox"))) {
    return "AXSearchField";
  }
  const Row* row = rowOf(facts.role);
  return row != nullptr ? row->macSubrole : "";
}

bool roleNeedsAttributes(std::uint32_t role) {
  return role == role::toggleButton;
}

bool nameIsValue(std::uint32_t role) {
  return role == role::staticText || role == role::label;
}

Standing standingOf(std::uint32_t role) {
  switch (role) {
    case role::frame:
    case role::window:
    case role::dialog:
    case role::fileChooser:
    case role::colorChooser:
    case role::fontChooser:
      return Standing::window;
    case role::alert:
      return Standing::perhapsWindow;
    default:
      return Standing::part;
  }
}

}  // namespace callmonitor::platform
