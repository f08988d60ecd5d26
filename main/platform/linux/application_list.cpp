// Merges the two lists by process and adds what the kernel knows.
#include "platform/linux/application_list.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "platform/linux/accessible_object.h"
#include "platform/linux/application_memory.h"
#include "platform/linux/bundle_identifier.h"
#include "platform/linux/desktop.h"
#include "platform/linux/frame_memory.h"
#include "platform/linux/identity_facts.h"
#include "platform/linux/peer_connections.h"
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

// False when the registry could not be read: what is remembered of it may be out of date.
bool refreshRegistered(Desktop& here) {
  static const BusTarget registry{{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"}};
  ApplicationMemory& memory = here.applications;
  if (memory.generation != here.bus.generation) {
    // Names of an earlier bus mean nothing on this one.
    memory.generation = here.bus.generation;
    memory.registered.clear();
    memory.processOfBusName.clear();
  }
  const auto children = readChildren(here.bus, registry);
  if (children.code != code::success) return false;
  std::vector<RegisteredApplication> registered;
  std::map<std::string, std::int32_t> stillThere;
  std::set<std::string> names;
  for (const ObjectName& root : children.value) {
    names.insert(root.bus);
    const auto pid = processOf(here, root.bus);
    if (!pid) continue;
    registered.push_back({root, *pid});
    stillThere.emplace(root.bus, *pid);
  }
  memory.registered = std::move(registered);
  memory.processOfBusName = std::move(stillThere);
  forgetUnregistered(here.frames, names);
  forgetUnregistered(here.peers, names);
  return true;
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

std::vector<Application> readApplications(Desktop& here) {
  ApplicationMemory& memory = here.applications;
  // Only a list of now makes a process an application: its number in an older one may be another's.
  std::set<std::int32_t> listed;
  if (refreshRegistered(here)) {
    for (const RegisteredApplication& each : memory.registered) listed.insert(each.pid);
  }
  auto windows = clientWindows(*here.x11);
  const bool windowsRead = windows.has_value();
  const bool windowsKnown = windowsRead || !memory.windows.empty();
  if (windows) memory.windows = std::move(*windows);
  std::set<std::int32_t> withWindow;
  for (const ClientWindow& each : memory.windows) {
    if (each.pid && each.normal) withWindow.insert(*each.pid);
  }
  if (windowsRead) listed.insert(withWindow.begin(), withWindow.end());
  updateKnown(memory.known, listed, lookAtProcess);

  std::vector<Application> applications;
  for (auto& [pid, known] : memory.known) {
    if (!known.bundle) known.bundle = bundleIdentifier(identityFacts(pid));
    const bool regular = windowsKnown ? withWindow.contains(pid) : showsFrames(here, pid);
    applications.push_back({pid, launchTime(known.launch), known.bundle, regular});
  }
  // In order of launch: the same from call to call, whichever list an application is in.
  std::sort(applications.begin(), applications.end(),
            [](const Application& left, const Application& right) {
              return std::tie(left.launchedAt, left.pid) < std::tie(right.launchedAt, right.pid);
            });
  return applications;
}

// A new list, kept for the rest of the cycle.
std::vector<Application> freshList(Desktop& here) {
  std::vector<Application> applications = readApplications(here);
  if (here.applications.keepList) {
    here.applications.list = CycleList{here.bus.generation, applications, std::nullopt};
  }
  return applications;
}

// The list that this cycle has made; null when there is none, or it speaks of an earlier bus.
const std::vector<Application>* keptList(const Desktop& here) {
  const auto& list = here.applications.list;
  return list && list->generation == here.bus.generation ? &list->applications : nullptr;
}

const Application* applicationIn(const std::vector<Application>& applications, std::int32_t pid) {
  const auto found = std::find_if(applications.begin(), applications.end(),
                                  [&](const Application& each) { return each.pid == pid; });
  return found != applications.end() ? &*found : nullptr;
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
  const auto* kept = keptList(here);
  const bool good =
      kept != nullptr && std::all_of(kept->begin(), kept->end(), [&](const Application& each) {
        return launchGoesOn(here.applications.known, each.pid, lookAtProcess(each.pid));
      });
  return good ? *kept : freshList(here);
}

// Lists are long to read and asked for many times in a cycle, so one serves a whole cycle. What the
// kernel knows is read afresh each time: a process that ends or is replaced in the middle of a
// cycle is noticed at once.
std::optional<Application> runningApplication(std::int32_t pid) {
  Desktop& here = desktop();
  const ProcessLook look = lookAtProcess(pid);
  if (look.gone) return std::nullopt;
  if (const auto* kept = keptList(here)) {
    const Application* application = applicationIn(*kept, pid);
    if (application != nullptr && launchGoesOn(here.applications.known, pid, look)) {
      return *application;
    }
    // The window in front may belong to a process that is no application, and a cycle asks for it
    // several times.
    if (application == nullptr && isStranger(*here.applications.list, pid, look)) {
      return std::nullopt;
    }
  }
  const std::vector<Application> applications = freshList(here);
  if (const Application* application = applicationIn(applications, pid)) return *application;
  if (here.applications.list && look.stat) {
    here.applications.list->stranger = Stranger{pid, look.stat->startTicks};
  }
  return std::nullopt;
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
