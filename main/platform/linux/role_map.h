// The decision rules speak the role names of macOS. This is the one place that says which of them
// an accessible object of this desktop goes by.
//
// The pairs follow the public mappings of web content to both accessibility interfaces, so that a
// page is judged here as it would be there: what holds other people's words (lists, tables, trees,
// quotes, logs, feeds, text inputs) must come out under the names that the rules exclude.
#pragma once

#include <cstdint>
#include <string_view>

namespace callmonitor::platform {

// The role numbers of the accessibility bus that code other than the table refers to.
namespace role {
inline constexpr std::uint32_t invalid = 0;
inline constexpr std::uint32_t alert = 2;
inline constexpr std::uint32_t colorChooser = 9;
inline constexpr std::uint32_t comboBox = 11;
inline constexpr std::uint32_t dialog = 16;
inline constexpr std::uint32_t fileChooser = 19;
inline constexpr std::uint32_t fontChooser = 22;
inline constexpr std::uint32_t frame = 23;
inline constexpr std::uint32_t label = 29;
inline constexpr std::uint32_t panel = 39;
inline constexpr std::uint32_t pushButton = 43;
inline constexpr std::uint32_t text = 61;
inline constexpr std::uint32_t toggleButton = 62;
inline constexpr std::uint32_t window = 69;
inline constexpr std::uint32_t entry = 79;
inline constexpr std::uint32_t documentWeb = 95;
inline constexpr std::uint32_t staticText = 116;
}  // namespace role

// State bits of the accessibility bus.
namespace state {
inline constexpr std::uint64_t defunct = 1ULL << 6;
inline constexpr std::uint64_t editable = 1ULL << 7;
inline constexpr std::uint64_t enabled = 1ULL << 8;
inline constexpr std::uint64_t focusable = 1ULL << 11;
inline constexpr std::uint64_t multiLine = 1ULL << 17;
inline constexpr std::uint64_t visible = 1ULL << 30;
inline constexpr std::uint64_t hasPopup = 1ULL << 42;
}  // namespace state

// What the mapping looks at. The texts are object attributes and are only asked for where
// `roleNeedsAttributes` or a subrole is wanted; empty means that the object has none.
struct AccessibleFacts {
  std::uint32_t role = role::invalid;
  std::uint64_t states = 0;
  bool topLevel = false;         // a window of its application, not a part of one
  std::string_view webRoles{};   // attribute "xml-roles": the page's own role words
  std::string_view tag{};        // attribute "tag": the HTML element
  std::string_view inputType{};  // attribute "text-input-type"
};

// "AXRole". Never empty; what nothing is known about is "AXUnknown".
[[nodiscard]] std::string_view macRole(const AccessibleFacts& facts);

// "AXSubrole"; empty when the object has none.
[[nodiscard]] std::string_view macSubrole(const AccessibleFacts& facts);

// Whether "AXRole" depends on the object's attributes and not on role and states alone.
[[nodiscard]] bool roleNeedsAttributes(std::uint32_t role);

// Whether the object's name is the text that it shows ("AXValue") and not its label ("AXTitle").
[[nodiscard]] bool nameIsValue(std::uint32_t role);

// What a child of an application with this role is to the application.
enum class Standing {
  part,    // never a window
  window,  // one of its windows
  // A window only where the window server shows one behind it: a toolkit's message dialog has the
  // same role as a browser's permission prompt, which stands beside the windows and is none.
  perhapsWindow,
};
[[nodiscard]] Standing standingOf(std::uint32_t role);

}  // namespace callmonitor::platform
