// Which window of the window server a frame was found to belong to, and when that must be
// forgotten. Names change all the time, and a window must not go and come with them; but a pair
// that outlives its frame would take the window away from whoever is given its number next.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/accessibility_bus.h"
#include "platform/linux/x11.h"

namespace callmonitor::platform {

using FramePairs = std::map<ObjectName, std::uint32_t>;  // frame to number of its window

struct FrameMemory {
  std::uint64_t generation = 0;  // of the accessibility bus
  // Certain pairs. Each lasts until one of its two sides is gone.
  FramePairs certain;
  // The other pairs of the last reading. They serve this cycle's names; the focused window is
  // chosen by one only where it is its application's only such pair.
  FramePairs passing;
};

// Forgets the pairs of applications that are not registered any more; `registered` holds the bus
// names of those that are.
void forgetUnregistered(FrameMemory& memory, const std::set<std::string>& registered);

// Forgets the pairs whose window is not in the window manager's list.
void forgetClosedWindows(FrameMemory& memory, const std::vector<ClientWindow>& listed);

// Forgets the pairs of the application behind `busName` whose frame is not among `children`, what
// the application's root object holds now.
void forgetClosedFrames(FrameMemory& memory, const std::string& busName,
                        const std::vector<ObjectName>& children);

// Whether some frame has the window for certain.
[[nodiscard]] bool paired(const FrameMemory& memory, std::uint32_t window);

// The window of a frame by the last reading, certain or not; absent when it has none.
[[nodiscard]] std::optional<std::uint32_t> windowOf(const FrameMemory& memory,
                                                    const ObjectName& frame);

}  // namespace callmonitor::platform
