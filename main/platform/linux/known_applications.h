// The launches that are remembered, and when each must be forgotten: the kernel alone says when one
// is over, lists only say what is worth remembering.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/process_files.h"

namespace callmonitor::platform {

// One launch that was once listed as an application.
struct KnownApplication {
  ProcessStat launch;
  // Does not change while the process lives; absent until it could be told.
  std::optional<std::string> bundle;
};
using KnownApplications = std::map<std::int32_t, KnownApplication>;  // by process id

using ProcessLooker = std::function<ProcessLook(std::int32_t)>;

// Whether the launch that is known of `pid` is not over, as far as a look at the process can tell:
// a look that says nothing ends nothing. False for a process that is not known.
[[nodiscard]] bool launchGoesOn(const KnownApplications& known, std::int32_t pid,
                                const ProcessLook& look);

// Brings `known` up to date with the process ids that are listed now. What was known stays, listed
// or not, until a look says that this launch is over; what is listed becomes known as soon as a
// look shows its launch. Each process is looked at once.
void updateKnown(KnownApplications& known, const std::set<std::int32_t>& listed,
                 const ProcessLooker& look);

}  // namespace callmonitor::platform
