// Merges the two lists by process and adds what the kernel knows.
#include "platform/linux/application_list.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>

#include "platform/linux/accessible_object.h"
#include "platform/linux/bundle_identifier.h"
#include "platform/linux/desktop.h"
#include "platform/linux/process_files.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

std::optional<std::int32_t> processOf(Desktop& here, const std::string& busName) {
  auto& known = here.applications.processOfBusName;
  if (const auto found = known.find(busName); found != known.end()) return found->second;
  const auto answer = readProcess(here.bus, busName);
  if (answer.code != code::success) return std::nullopt;
  known.emplace(busName, answer.value);
  return answer.value;
}

void refreshRegistered(Desktop& here) {
  static const BusTarget registry{{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"}};
  ApplicationMemory& memory = here.applications;
  if (memory.generation != here.bus.generation) {
    // Names of an earlier bus mean nothing on this one.
    memory.generation = here.bus.generation;
    memory.registered.clear();
    memory.processOfBusName.clear();
  }
  const auto children = readChildren(here.bus, registry);
  if (children.code != code::success) return;
  std::vector<RegisteredApplication> registered;
  std::map<std::string, std::int32_t> stillThere;
  for (const ObjectName& root : children.value) {
    const auto pid = processOf(here, root.bus);
    if (!pid) continue;
    registered.push_back({root, *pid});
    stillThere.emplace(root.bus, *pid);
  }
  memory.registered = std::move(registered);
  memory.processOfBusName = std::move(stillThere);
}

const RegisteredApplication* registeredApplication(const ApplicationMemory& memory,
                                                   std::int32_t pid) {
  const auto found =
      std::find_if(memory.registered.begin(), memory.registered.end(),
                   [&](const RegisteredApplication& each) { return each.pid == pid; });
  return found != memory.registered.end() ? &*found : nullptr;
}

// Without a list of windows, an application that shows any frame is taken to have windows.
bool showsFrames(Desktop& here, std::int32_t pid) {
  const RegisteredApplication* application = registeredApplication(here.applications, pid);
  if (application == nullptr) return false;
  const auto properties = readProperties(here.bus, {application->root});
  return properties.code == code::success && properties.value.childCount.value_or(0) > 0;
}

const std::optional<std::string>& bundleOf(ApplicationMemory& memory, std::int32_t pid,
                                           std::uint64_t startTicks) {
  const auto found = memory.identities.find(pid);
  if (found != memory.identities.end() && found->second.startTicks == startTicks) {
    return found->second.bundle;
  }
  KnownIdentity identity{startTicks, bundleIdentifier(identityFacts(pid))};
  return memory.identities.insert_or_assign(pid, std::move(identity)).first->second.bundle;
}

}  // namespace

std::optional<ObjectName> registeredRoot(Desktop& here, std::int32_t pid) {
  const bool current = here.applications.generation == here.bus.generation;
  if (!current || registeredApplication(here.applications, pid) == nullptr) {
    refreshRegistered(here);
  }
  const RegisteredApplication* application = registeredApplication(here.applications, pid);
  if (application == nullptr) return std::nullopt;
  return application->root;
}

std::vector<Application> runningApplications() {
  Desktop& here = desktop();
  ApplicationMemory& memory = here.applications;
  refreshRegistered(here);
  auto windows = clientWindows(*here.x11);
  const bool windowsKnown = windows || !memory.windows.empty();
  if (windows) memory.windows = std::move(*windows);

  std::set<std::int32_t> pids;
  std::set<std::int32_t> withWindow;
  for (const RegisteredApplication& each : memory.registered) pids.insert(each.pid);
  for (const ClientWindow& each : memory.windows) {
    if (!each.pid || !each.normal) continue;
    pids.insert(*each.pid);
    withWindow.insert(*each.pid);
  }

  std::vector<Application> applications;
  for (const std::int32_t pid : pids) {
    const auto stat = processStat(pid);
    if (!stat) continue;
    const bool regular = windowsKnown ? withWindow.contains(pid) : showsFrames(here, pid);
    applications.push_back(
        {pid, launchTime(*stat), bundleOf(memory, pid, stat->startTicks), regular});
  }
  std::erase_if(memory.identities, [&](const auto& each) { return !pids.contains(each.first); });
  // In order of launch: the same from call to call, whichever list an application is in.
  std::sort(applications.begin(), applications.end(),
            [](const Application& left, const Application& right) {
              return std::tie(left.launchedAt, left.pid) < std::tie(right.launchedAt, right.pid);
            });
  return applications;
}

std::optional<Application> runningApplication(std::int32_t pid) {
  const std::vector<Application> applications = runningApplications();
  const auto found = std::find_if(applications.begin(), applications.end(),
                                  [&](const Application& each) { return each.pid == pid; });
  if (found == applications.end()) return std::nullopt;
  return *found;
}

std::optional<Application> frontmostApplication() {
  Desktop& here = desktop();
  const auto window = activeWindow(*here.x11);
  if (!window) return std::nullopt;
  const auto pid = windowProcess(*here.x11, *window);
  if (!pid) return std::nullopt;
  return runningApplication(*pid);
}

}  // namespace callmonitor::platform
