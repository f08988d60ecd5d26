// A look that says nothing ends nothing.
#include "platform/linux/known_applications.h"

namespace callmonitor::platform {

bool launchGoesOn(const KnownApplications& known, std::int32_t pid, const ProcessLook& look) {
  const auto found = known.find(pid);
  if (found == known.end() || look.gone) return false;
  return !look.stat || look.stat->startTicks == found->second.launch.startTicks;
}

void updateKnown(KnownApplications& known, const std::set<std::int32_t>& listed,
                 const ProcessLooker& look) {
  std::set<std::int32_t> pids = listed;
  for (const auto& [pid, application] : known) pids.insert(pid);
  for (const std::int32_t pid : pids) {
    const ProcessLook now = look(pid);
    if (launchGoesOn(known, pid, now)) continue;
    known.erase(pid);
    if (now.stat && listed.contains(pid)) known.emplace(pid, KnownApplication{*now.stat, {}});
  }
}

}  // namespace callmonitor::platform
