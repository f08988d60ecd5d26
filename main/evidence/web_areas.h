// The bounded search for the pages under a window.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "evidence/attributes.h"
#include "platform/platform.h"

namespace callmonitor {

inline constexpr int webAreaBudget = 1200;           // elements taken in one search
inline constexpr double webAreaSearchSeconds = 0.5;  // uptime seconds of one search

template <class Node>
struct WebAreas {
  std::vector<Node> roots;
  // The search saw every element: no budget, deadline or child cap cut it short.
  bool complete = true;
};

// A depth-first search, last child first, that does not descend into what it finds. An element that
// is hidden or shows no role is passed over with its subtree. `withinDeadline` says whether time is
// left, `read` reads one attribute of a node.
template <class Node, class WithinDeadline, class Read>
[[nodiscard]] WebAreas<Node> searchWebAreas(const Node& start, WithinDeadline withinDeadline,
                                            Read read) {
  WebAreas<Node> found;
  std::vector<Node> stack{start};
  for (int taken = 0; !stack.empty() && taken < webAreaBudget && withinDeadline(); ++taken) {
    const Node node = stack.back();
    stack.pop_back();
    if (flagIn(read(node, attributes::hidden), false)) continue;
    const std::string role = textIn(read(node, attributes::role));
    if (role.empty()) continue;
    if (role == webAreaRole) {
      found.roots.push_back(node);
      continue;
    }
    std::vector<Node> children = elementsIn(read(node, attributes::children));
    if (children.size() > childCap) {
      found.complete = false;
      children.resize(childCap);
    }
    stack.insert(stack.end(), children.begin(), children.end());
  }
  if (!stack.empty() || !withinDeadline()) found.complete = false;
  return found;
}

// The search over live elements, which ends after half a second and no later than `pollDeadline`
// (uptime seconds).
[[nodiscard]] inline WebAreas<Element> webAreas(const Element& start, double pollDeadline) {
  const double deadline = std::min(platform::systemUptime() + webAreaSearchSeconds, pollDeadline);
  platform::expectSearch(start, deadline, webAreaBudget);
  return searchWebAreas(
      start, [deadline] { return platform::systemUptime() < deadline; }, platform::readAttribute);
}

}  // namespace callmonitor
