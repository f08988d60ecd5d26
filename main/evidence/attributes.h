// Readers of single accessibility attributes. A failure is an absent value here; whoever has to
// know the difference looks at the code.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/platform.h"

namespace callmonitor {

using platform::Element;
using platform::ReadingOf;
using platform::ValueOf;

namespace attributes {
inline constexpr std::string_view role = "AXRole";
inline constexpr std::string_view roleDescription = "AXRoleDescription";
inline constexpr std::string_view subrole = "AXSubrole";
inline constexpr std::string_view title = "AXTitle";
inline constexpr std::string_view description = "AXDescription";
inline constexpr std::string_view value = "AXValue";
inline constexpr std::string_view identifier = "AXIdentifier";
inline constexpr std::string_view hidden = "AXHidden";
inline constexpr std::string_view enabled = "AXEnabled";
inline constexpr std::string_view children = "AXChildren";
inline constexpr std::string_view url = "AXURL";
inline constexpr std::string_view windows = "AXWindows";
inline constexpr std::string_view focusedWindow = "AXFocusedWindow";
inline constexpr std::string_view enhancedUserInterface = "AXEnhancedUserInterface";
}  // namespace attributes

// The longest that one message to an application may take, in seconds: a hung client must not stall
// the tick.
inline constexpr double messageTimeout = 0.2;

// No element has more of its children read.
inline constexpr std::size_t childCap = platform::walkChildCap;

// The roles that more than one rule looks at.
inline constexpr std::string_view webAreaRole = "AXWebArea";  // a page in a browser or web client
inline constexpr std::string_view staticTextRole = "AXStaticText";
inline constexpr std::string_view buttonRole = "AXButton";

// The codes that mean that an element simply does not have an attribute.
[[nodiscard]] constexpr bool absentAttribute(std::int32_t code) {
  return code == platform::code::attributeUnsupported || code == platform::code::noValue;
}

// The value of a successful reading, where it has the wanted type; null otherwise.
template <class Wanted, class Node>
[[nodiscard]] const Wanted* valueIn(const ReadingOf<Node>& reading) {
  return reading.code == platform::code::success ? std::get_if<Wanted>(&reading.value) : nullptr;
}

// The text of a reading; empty on an error, an empty result or a value that is not a text.
template <class Node>
[[nodiscard]] std::string textIn(const ReadingOf<Node>& reading) {
  const auto* text = valueIn<std::string>(reading);
  return text ? *text : std::string();
}

// The elements of a reading; none on an error or a value that is not a list of elements.
template <class Node>
[[nodiscard]] std::vector<Node> elementsIn(const ReadingOf<Node>& reading) {
  const auto* nodes = valueIn<std::vector<Node>>(reading);
  return nodes ? *nodes : std::vector<Node>();
}

// The Boolean of a reading; `otherwise` on an error or a value that is not a Boolean.
template <class Node>
[[nodiscard]] bool flagIn(const ReadingOf<Node>& reading, bool otherwise) {
  const auto* flag = valueIn<bool>(reading);
  return flag ? *flag : otherwise;
}

// The address of a reading, given as an address or as plain text; absent otherwise.
template <class Node>
[[nodiscard]] std::optional<std::string> addressIn(const ReadingOf<Node>& reading) {
  if (const auto* address = valueIn<platform::Address>(reading)) return address->text;
  if (const auto* text = valueIn<std::string>(reading)) return *text;
  return std::nullopt;
}

// Reads a live element's attribute unless the deadline (uptime seconds) has passed, which answers
// as an application that does not answer: one slow application must not keep a look at it going,
// not even within one element.
[[nodiscard]] inline platform::Reading readBefore(double deadline, const Element& element,
                                                  std::string_view name) {
  if (platform::systemUptime() >= deadline) return {platform::code::cannotComplete, {}};
  return platform::readAttribute(element, name);
}

// The text of a live element's attribute, as `textIn` says.
[[nodiscard]] inline std::string text(const Element& element, std::string_view name) {
  return textIn(platform::readAttribute(element, name));
}

}  // namespace callmonitor
