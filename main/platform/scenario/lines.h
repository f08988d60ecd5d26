// The outer form of a scenario file: lines of words, nested by indentation.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::scenario {

// One word of a line: `key=text`, or only a text. Quotes are taken off.
struct Word {
  std::string key;  // empty when the word has none
  std::string text;
  bool quoted = false;  // the text stood in quotes

  [[nodiscard]] bool bare() const { return key.empty() && !quoted; }
};

// One line with the lines that are indented below it. A line has at least one word.
struct Line {
  std::string origin;  // "line 12", with the file's name in front of it for an included file
  std::vector<Word> words;
  std::vector<Line> below;

  [[nodiscard]] const std::string& verb() const { return words.front().text; }
};

// What was wrong first. Whoever fails says so here and gives false; nothing goes on after that.
struct Problem {
  std::string text;  // "line 12: ..."

  bool at(const std::string& origin, const std::string& reason) {
    if (text.empty()) text = origin + ": " + reason;
    return false;
  }
};

// Splits a text into its lines. `file` is put in front of the line numbers, empty for the scenario
// itself. Absent when quotes or indentation do not work out.
[[nodiscard]] std::optional<std::vector<Line>> readLines(std::string_view text,
                                                         const std::string& file, Problem& problem);

// What stands for `{name}` in words.
using Substitutes = std::map<std::string, std::string>;

// The line's words with every `{name}` replaced; what is below it stays as it is. Absent when a
// name is not known.
[[nodiscard]] std::optional<Line> substituted(const Line& line, const Substitutes& substitutes,
                                              Problem& problem);

}  // namespace callmonitor::scenario
