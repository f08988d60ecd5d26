// Reads the lines that say what happens on the desktop: how it stands at first, and what changes.
#pragma once

#include <vector>

#include "platform/scenario/element_lines.h"
#include "platform/scenario/lines.h"
#include "platform/scenario/scenario.h"

namespace callmonitor::scenario {

// Reads a block of such lines, with `use` and `repeat` in it. False when one of them is wrong.
bool readChanges(Reading& reading, const std::vector<Line>& lines, const Place& place,
                 std::vector<Change>& changes);

}  // namespace callmonitor::scenario
