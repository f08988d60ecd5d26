#include "macos/standins/workspace.h"

#include <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "macos/standins/desktop.h"

namespace callmonitor::standins {

// The classes themselves, under the names by which compiled code refers to them.
Object workspaceClass __asm__("OBJC_CLASS_$_NSWorkspace"){Named{"NSWorkspace class"}, 0, 0, true};
Object applicationClass __asm__("OBJC_CLASS_$_NSRunningApplication"){
    Named{"NSRunningApplication class"}, 0, 0, true};
Object processInfoClass __asm__("OBJC_CLASS_$_NSProcessInfo"){Named{"NSProcessInfo class"}, 0, 0,
                                                              true};

namespace {

using Selector = const char*;

// What a method gives without Create or Copy in its name belongs to the pool.
Object* pooled(Object* object) {
  keepInPool(object);
  return object;
}

Object* applicationObject(const std::optional<platform::Application>& application) {
  return application ? pooled(made(RunningApplication{*application})) : nullptr;
}

Object* sharedWorkspace(Object* /*self*/, Selector) {
  static Object* const workspace = constant(Named{"NSWorkspace"});
  return pooled(workspace);
}

Object* runningApplications(Object* /*self*/, Selector) {
  arrive("runningApplications");
  std::vector<Object*> list;
  list.reserve(desktop().applications.size());
  for (const platform::Application& application : desktop().applications) {
    list.push_back(made(RunningApplication{application}));
  }
  return pooled(madeList(list));
}

Object* frontmostApplication(Object* /*self*/, Selector) {
  arrive("frontmostApplication");
  return applicationObject(desktop().front);
}

Object* applicationWithPid(Object* /*self*/, Selector, pid_t pid) {
  arrive("runningApplicationWithProcessIdentifier:");
  if (desktop().lookup && desktop().lookup->pid == pid) return applicationObject(desktop().lookup);
  const auto& applications = desktop().applications;
  const auto found = std::ranges::find(applications, pid, &platform::Application::pid);
  return found == applications.end() || desktop().lookupFails ? nullptr : applicationObject(*found);
}

const platform::Application& valuesOf(const Object* self) {
  return std::get<RunningApplication>(self->payload).values;
}

pid_t processIdentifier(Object* self, Selector) {
  return valuesOf(self).pid;
}

NSInteger activationPolicy(Object* self, Selector) {
  return desktop().activationPolicy.value_or(valuesOf(self).regular
                                                 ? NSApplicationActivationPolicyRegular
                                                 : NSApplicationActivationPolicyAccessory);
}

Object* bundleIdentifier(Object* self, Selector) {
  const auto& bundle = valuesOf(self).bundleIdentifier;
  return bundle ? pooled(madeText(*bundle)) : nullptr;
}

Object* launchDate(Object* self, Selector) {
  const auto& launched = valuesOf(self).launchedAt;
  return launched ? pooled(made(Date{*launched})) : nullptr;
}

NSTimeInterval timeIntervalSince1970(Object* self, Selector) {
  return std::get<Date>(self->payload).since1970;
}

// Hands the whole list over at once, then none.
NSUInteger enumerate(Object* self, Selector, NSFastEnumerationState* state, void** /*buffer*/,
                     NSUInteger /*length*/) {
  static unsigned long neverChanges = 0;
  if (state->state != 0) return 0;
  auto& items = std::get<List>(self->payload).items;
  state->state = 1;
  state->mutationsPtr = &neverChanges;
  state->itemsPtr = reinterpret_cast<void**>(items.data());
  return items.size();
}

Object* processInfo(Object* /*self*/, Selector) {
  static Object* const information = constant(Named{"NSProcessInfo"});
  return pooled(information);
}

NSTimeInterval systemUptime(Object* /*self*/, Selector) {
  return desktop().uptime;
}

BOOL isAtLeast(Object* /*self*/, Selector, NSOperatingSystemVersion version) {
  const auto wanted = std::tuple(version.majorVersion, version.minorVersion, version.patchVersion);
  return std::tuple(desktop().majorVersion, desktop().minorVersion, NSInteger{0}) >= wanted;
}

// The name by which the table below knows an object.
std::string_view classOf(const Object& object) {
  if (const auto* named = std::get_if<Named>(&object.payload)) return named->name;
  if (std::holds_alternative<RunningApplication>(object.payload)) return "NSRunningApplication";
  if (std::holds_alternative<List>(object.payload)) return "NSArray";
  if (std::holds_alternative<Date>(object.payload)) return "NSDate";
  return "";
}

struct Method {
  std::string_view owner;
  std::string_view selector;
  AnyMethod function;
};

template <class Function>
AnyMethod any(Function function) {
  return reinterpret_cast<AnyMethod>(function);
}

}  // namespace

AnyMethod methodOf(const Object& receiver, std::string_view selector) {
  static const std::array<Method, 13> methods{{
      {"NSWorkspace class", "sharedWorkspace", any(sharedWorkspace)},
      {"NSWorkspace", "runningApplications", any(runningApplications)},
      {"NSWorkspace", "frontmostApplication", any(frontmostApplication)},
      {"NSRunningApplication class",
       "runningApplicationWithProcessIdentifier:", any(applicationWithPid)},
      {"NSRunningApplication", "processIdentifier", any(processIdentifier)},
      {"NSRunningApplication", "activationPolicy", any(activationPolicy)},
      {"NSRunningApplication", "bundleIdentifier", any(bundleIdentifier)},
      {"NSRunningApplication", "launchDate", any(launchDate)},
      {"NSDate", "timeIntervalSince1970", any(timeIntervalSince1970)},
      {"NSArray", "countByEnumeratingWithState:objects:count:", any(enumerate)},
      {"NSProcessInfo class", "processInfo", any(processInfo)},
      {"NSProcessInfo", "systemUptime", any(systemUptime)},
      {"NSProcessInfo", "isOperatingSystemAtLeastVersion:", any(isAtLeast)},
  }};
  for (const Method& method : methods) {
    if (method.owner == classOf(receiver) && method.selector == selector) return method.function;
  }
  refuse("a " + std::string(classOf(receiver)) + " has no method " + std::string(selector));
}

}  // namespace callmonitor::standins
