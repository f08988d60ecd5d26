// What one label scan of a window or page found, and how far it got.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace callmonitor {

// "unknown" means that the evidence decides nothing, never that the user is out of a call.
enum class CallState { unknown, joined, left };

// The word that records use for a state.
[[nodiscard]] constexpr std::string_view stateWord(CallState state) {
  switch (state) {
    case CallState::joined:
      return "joined";
    case CallState::left:
      return "left";
    case CallState::unknown:
      break;
  }
  return "unknown";
}

struct Evidence {
  std::vector<std::string> controls;  // labels of enabled call controls, in visiting order
  std::vector<std::string> notices;   // notice texts, in visiting order
  bool nativeZoomTile = false;        // a native Zoom participant tile was seen
  bool complete = true;               // the whole tree was visited and every element was read
  int nodes = 0;                      // elements taken, read or not
  int failedNodes = 0;                // elements that could not be read
  // Distinct failures, each the attribute name, ":" and the code; ascending, at most 16.
  std::vector<std::string> failedAttributes;
  // What the preview recovery saw, distinct and ascending; diagnostics that no rule reads.
  std::vector<std::string> failedControlHints;
  bool truncated = false;  // the walk stopped with work left, for its budget or the child cap
  bool deadline = false;   // the deadline had passed when the walk ended

  // The state of the client that shows this. Evidence that is not complete decides nothing, not
  // even that a call is joined.
  [[nodiscard]] CallState state(std::string_view provider) const;
};

}  // namespace callmonitor
