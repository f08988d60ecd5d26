// Loads scenario files. The form is described in docs/scenarios.md.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/scenario/scenario.h"

namespace callmonitor::scenario {

// A scenario, or why there is none: "line 12: ...".
struct Loaded {
  std::optional<Scenario> scenario;
  std::string error;
};

// Gives the text of an included file by the name that the scenario calls it; absent when there is
// none.
using ReadIncluded = std::function<std::optional<std::string>(const std::string& name)>;

// Reads a scenario and tries every change in it once, so that one that cannot happen (a name that
// nothing has, two elements of one name) is an error here and not in the middle of a run.
[[nodiscard]] Loaded parseScenario(std::string_view text, const ReadIncluded& readIncluded);

// The same from a file; includes are looked up beside it. A file that cannot be read is an error
// without a line.
[[nodiscard]] Loaded loadScenario(const std::string& path);

}  // namespace callmonitor::scenario
