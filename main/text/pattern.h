// A regular expression in ICU's syntax, compiled once. Matching is case-sensitive and searches
// anywhere in the text unless the expression is anchored.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace callmonitor {

class Pattern {
 public:
  // An expression that ICU rejects is a programming error and ends the process here, when the
  // tables are built, rather than at some later match.
  explicit Pattern(std::string_view expression);
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern();

  // Whether the expression is found in the text. A search that exhausts its step limit, which only
  // a text made for it can bring about, finds nothing.
  [[nodiscard]] bool foundIn(std::string_view text) const;

  // The text of the first capture group that took part in the first match; absent when nothing
  // matches or no group took part.
  [[nodiscard]] std::optional<std::string> firstGroup(std::string_view text) const;

  // The text with every match taken out; the text as it is when the step limit is exhausted.
  [[nodiscard]] std::string removedFrom(std::string_view text) const;

 private:
  struct Compiled;
  std::unique_ptr<Compiled> compiled_;
};

}  // namespace callmonitor
