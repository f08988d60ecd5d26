#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pcre2_real_code_8;

namespace callmonitor::oracle {

// A compiled expression of another engine than the program's own, so that a fault of either shows.
// An expression that does not compile ends the test program, and so does a match that the engine
// gives up.
struct Expression {
  std::shared_ptr<pcre2_real_code_8> code;
};

// "$" is the very end of a text in both, and letters are told apart by case.
Expression overCharacters(const std::string& pattern);  // of texts in UTF-8
Expression overBytes(const std::string& pattern);

bool matchesWhole(const std::string& text, const Expression& expression);
bool matchesSomewhere(const std::string& text, const Expression& expression);

// What stands at the front of a text, and behind it what its groups took; absent without a match.
std::optional<std::vector<std::string>> matchAtFront(const std::string& text,
                                                     const Expression& expression);

// The text without the first match.
std::string withoutMatch(const std::string& text, const Expression& expression);

}  // namespace callmonitor::oracle
