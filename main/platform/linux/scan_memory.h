// What is known of the walk that is going on.
#pragma once

#include <cstdint>
#include <set>

#include "platform/linux/accessible_object.h"
#include "platform/linux/walk_mirror.h"

namespace callmonitor::platform {

// One walk, from its announcement until it is seen to be over. Belongs to a cycle.
struct ScanAhead {
  bool active = false;
  std::uint64_t generation = 0;        // of the accessibility bus
  double deadline = 0;                 // uptime seconds
  std::uint64_t limit = messageLimit;  // microseconds for one message
  WalkMirror mirror;
  std::set<Question> asked;
};

}  // namespace callmonitor::platform
