// A copy of the stack of a walk that happens elsewhere, made from nothing but what the walk reads:
// it tells which elements the walk takes next.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/linux/bus_message.h"

namespace callmonitor::platform {

struct WalkMirror {
  std::vector<ObjectName> stack;    // what the walk knows of and has not taken; the next one last
  std::optional<ObjectName> taken;  // the element that the walk reads now
  std::size_t beneath = 0;          // how much of the stack lies below its children
  int left = 0;                     // elements that the walk may still take
};

// A walk of the tree under `root` that takes at most `budget` elements.
[[nodiscard]] WalkMirror beginWalk(ObjectName root, int budget);

// What a read of an element says about the walk.
enum class Step {
  stays,    // it still reads the element that it took last
  takes,    // it has taken this one
  strange,  // it cannot have come to this element: it is over, or another than was expected
};

struct Followed {
  Step step = Step::strange;
  std::vector<ObjectName> skipped;  // elements that the walk passed over and will not come to
  std::optional<ObjectName> left = std::nullopt;  // the element that it read before this one
};

// Follows the walk to `object`. `again` says that the same attribute of the same element was read
// before, which is a new element only where the element stands on the stack once more.
[[nodiscard]] Followed follow(WalkMirror& mirror, const ObjectName& object, bool again);

// The walk has read the children of the element that it took last. Of more than it takes of any
// element only the first are kept. Reading them once more replaces them.
void descend(WalkMirror& mirror, const std::vector<ObjectName>& children);

// The elements that the walk takes next if it skips none, the nearest first: at most `most`, and no
// more than it may still take.
[[nodiscard]] std::vector<ObjectName> upcoming(const WalkMirror& mirror, std::size_t most);

}  // namespace callmonitor::platform
