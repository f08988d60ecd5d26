#include "platform/scenario/element_kinds.h"

#include <algorithm>
#include <array>

namespace callmonitor::scenario {
namespace {

struct Entry {
  std::string_view word;
  std::string_view role;
  std::string_view subrole;
};

constexpr auto entries = std::to_array<Entry>({
    {applicationKind, "AXApplication", ""},
    {"window", "AXWindow", "AXStandardWindow"},
    {"dialog", "AXWindow", "AXDialog"},
    {"page", "AXWebArea", ""},
    {"group", "AXGroup", ""},
    {"region", "AXGroup", "AXLandmarkRegion"},
    {"alert", "AXGroup", "AXApplicationAlert"},
    {"status", "AXGroup", "AXApplicationStatus"},
    {"log", "AXGroup", "AXApplicationLog"},
    {"feed", "AXGroup", "AXApplicationFeed"},
    {"button", "AXButton", ""},
    {"checkbox", "AXCheckBox", ""},
    {"menubutton", "AXMenuButton", ""},
    {"popup", "AXPopUpButton", ""},
    {"radio", "AXRadioButton", ""},
    {"link", "AXLink", ""},
    {"heading", "AXHeading", ""},
    {"text", "AXStaticText", ""},
    {"textfield", "AXTextField", ""},
    {"textarea", "AXTextArea", ""},
    {"list", "AXList", ""},
    {"table", "AXTable", ""},
    {"outline", "AXOutline", ""},
    {"quote", "AXBlockQuote", ""},
    {"image", "AXImage", ""},
    {"toolbar", "AXToolbar", ""},
    {"menu", "AXMenu", ""},
    {"menuitem", "AXMenuItem", ""},
    {"scroll", "AXScrollArea", ""},
    {"split", "AXSplitGroup", ""},
    {"tabs", "AXTabGroup", ""},
});

const Entry* find(std::string_view word) {
  const auto* found = std::ranges::find(entries, word, &Entry::word);
  return found == entries.end() ? nullptr : found;
}

bool isRole(std::string_view word) {
  return word.size() > 2 && word.starts_with("AX");
}

// What these hold is their value, not their title.
bool showsValue(std::string_view role) {
  return role == "AXStaticText" || role == "AXTextField" || role == "AXTextArea";
}

}  // namespace

bool elementKindKnown(std::string_view word) {
  return word != applicationKind && (find(word) != nullptr || isRole(word));
}

ElementKind elementKind(std::string_view word) {
  const Entry* entry = find(word);
  const std::string role(entry == nullptr ? word : entry->role);
  return {role, std::string(entry == nullptr ? "" : entry->subrole),
          showsValue(role) ? "AXValue" : "AXTitle"};
}

}  // namespace callmonitor::scenario
