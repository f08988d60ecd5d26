// Choices drawn from a seeded generator, the same on every machine: the standard's distributions
// may differ between libraries, its generators may not.
#pragma once

#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::oracle {

class Draw {
 public:
  explicit Draw(unsigned seed) : random_(seed) {}

  // A number from 0 to `limit` - 1; `limit` is positive. The slight bias does not matter here.
  std::size_t below(std::size_t limit) { return random_() % limit; }

  // True once in `chance` draws.
  bool oneIn(std::size_t chance) { return below(chance) == 0; }

  // One of the choices, of which there is at least one.
  template <class Choices>
  auto from(const Choices& choices) {
    return choices[below(std::size(choices))];
  }

  // A template with every "{a|b|c}" replaced by one of its alternatives, which do not nest.
  std::string expanded(std::string_view text) {
    std::string result;
    while (!text.empty()) {
      const std::size_t open = text.find('{');
      result += text.substr(0, open);
      if (open == std::string_view::npos) break;
      const std::size_t close = text.find('}', open);
      std::string_view rest = text.substr(open + 1, close - open - 1);
      std::vector<std::string_view> alternatives;
      while (true) {
        const std::size_t bar = rest.find('|');
        alternatives.push_back(rest.substr(0, bar));
        if (bar == std::string_view::npos) break;
        rest.remove_prefix(bar + 1);
      }
      result += from(alternatives);
      text.remove_prefix(close + 1);
    }
    return result;
  }

 private:
  std::mt19937 random_;
};

}  // namespace callmonitor::oracle
