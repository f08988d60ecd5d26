// The words by which a scenario calls elements, and what each of them means to an accessibility
// client.
#pragma once

#include <string>
#include <string_view>

namespace callmonitor::scenario {

struct ElementKind {
  std::string role;
  std::string subrole;  // empty for none
  // The attribute that holds the text which stands beside the word.
  std::string textAttribute;
};

// The kind of an application's own element; no line may use it.
inline constexpr std::string_view applicationKind = "application";

// Whether a line may begin with this word: one of the table, or a role such as "AXGroup".
[[nodiscard]] bool elementKindKnown(std::string_view word);

// What a known word means. A role stands for itself, and its text is the title.
[[nodiscard]] ElementKind elementKind(std::string_view word);

}  // namespace callmonitor::scenario
