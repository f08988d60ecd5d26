#include "platform/scenario/world.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "platform/scenario/element_kinds.h"

namespace callmonitor::scenario {
namespace {

// Why a change cannot happen; absent when it did.
using Refusal = std::optional<std::string>;

Refusal unknownName(const std::string& name) {
  return "nothing is called \"" + name + "\" then";
}

WorldApplication* applicationNamed(World& world, const std::string& name) {
  const auto found = std::ranges::find(world.applications, name, &WorldApplication::name);
  return found == world.applications.end() ? nullptr : &*found;
}

WorldElement* elementNamed(World& world, const std::string& name) {
  const auto key = world.keys.find(name);
  return key == world.keys.end() ? nullptr : &world.elements.at(key->second);
}

std::string applicationKeyOf(const std::string& key) {
  return key.substr(0, key.find('/'));
}

bool isApplication(const std::string& key) {
  return key.find('/') == std::string::npos;
}

// Whether something may be the focused window: a window by its kind, or what stands for one.
bool isWindow(const WorldElement& element) {
  return elementKind(element.description.kind).role == "AXWindow" ||
         (!element.parent.empty() && isApplication(element.parent));
}

// "app:101/p" for the element p, "app:101/p~2" when there was one of this name before.
std::string freshKey(World& world, const std::string& application,
                     const ElementDescription& description) {
  const std::string key =
      application + "/" + (description.name.empty() ? description.kind : description.name);
  const int times = ++world.keysMade[key];
  return times == 1 ? key : key + "~" + std::to_string(times);
}

// Gives a name to a key, or says whose it is already.
Refusal takeName(World& world, const std::string& name, const std::string& key) {
  if (name.empty() || world.keys.try_emplace(name, key).second) return std::nullopt;
  return "there is another \"" + name + "\" then";
}

// Puts an element and all below it into an application, at a place among its parent's children.
Refusal place(World& world, const ElementDescription& description, const std::string& parent,
              std::size_t position) {
  const std::string key = freshKey(world, applicationKeyOf(parent), description);
  if (Refusal refusal = takeName(world, description.name, key)) return refusal;
  WorldElement element;
  element.description = description;
  element.description.children.clear();
  element.parent = parent;
  if (isApplication(parent)) {
    element.number = description.number.value_or(world.lastWindowNumber + 1);
    world.lastWindowNumber = std::max(world.lastWindowNumber, element.number);
  }
  world.elements.emplace(key, std::move(element));
  world.touched.insert(key);
  world.touched.insert(parent);
  std::vector<std::string>& siblings = world.elements.at(parent).children;
  siblings.insert(siblings.begin() + static_cast<std::ptrdiff_t>(position), key);
  for (std::size_t i = 0; i < description.children.size(); ++i) {
    if (Refusal refusal = place(world, description.children[i], key, i)) return refusal;
  }
  return std::nullopt;
}

Refusal placeAll(World& world, const std::vector<ElementDescription>& elements,
                 const std::string& parent, std::size_t position) {
  for (const ElementDescription& element : elements) {
    if (Refusal refusal = place(world, element, parent, position++)) return refusal;
  }
  return std::nullopt;
}

// Takes an element out of the tree, which leaves it existing; gives its place there.
std::size_t detach(World& world, const std::string& key) {
  WorldElement& element = world.elements.at(key);
  if (element.parent.empty()) return 0;
  std::vector<std::string>& siblings = world.elements.at(element.parent).children;
  const auto position = std::ranges::find(siblings, key);
  const auto index = static_cast<std::size_t>(position - siblings.begin());
  siblings.erase(position);
  world.touched.insert(std::exchange(element.parent, std::string()));
  return index;
}

void forget(World& world, const std::string& key) {
  const WorldElement& element = world.elements.at(key);
  const auto name = world.keys.find(element.description.name);
  if (name != world.keys.end() && name->second == key) world.keys.erase(name);
  for (WorldApplication& application : world.applications) {
    if (application.focused != key) continue;
    application.focused.reset();
    world.touched.insert(application.key);
  }
  world.touched.insert(key);
  world.elements.erase(key);
}

// Ends an element and all below it.
void end(World& world, const std::string& key) {
  (void)detach(world, key);
  const std::vector<std::string> children = world.elements.at(key).children;
  for (const std::string& child : children) end(world, child);
  forget(world, key);
}

// Ends every element of an application, those outside its tree too.
void endApplication(World& world, const std::string& key) {
  std::vector<std::string> keys;
  for (auto i = world.elements.lower_bound(key); i != world.elements.end(); ++i) {
    if (!i->first.starts_with(key)) break;
    if (i->first == key || i->first.starts_with(key + "/")) keys.push_back(i->first);
  }
  for (const std::string& each : keys) forget(world, each);
}

Refusal startApplication(World& world, const Change& change, WorldApplication application) {
  application.name = change.target;
  application.key = applicationElementKey(application.application.pid);
  if (world.elements.contains(application.key)) {
    return "another application has the process id " + std::to_string(application.application.pid);
  }
  if (Refusal refusal = takeName(world, application.name, application.key)) return refusal;
  WorldElement element;
  element.description = change.element;
  element.description.kind = applicationKind;
  element.description.name = application.name;
  element.description.children.clear();
  world.touched.insert(application.key);
  world.elements.emplace(application.key, std::move(element));
  world.applications.push_back(std::move(application));
  return placeAll(world, change.element.children, world.applications.back().key, 0);
}

Refusal start(World& world, const Change& change) {
  const ApplicationDescription& given = change.application;
  WorldApplication application;
  if (!given.pid && world.lastPid == std::numeric_limits<std::int32_t>::max()) {
    return "there is no further process id";
  }
  application.application.pid = given.pid ? *given.pid : world.lastPid + 1;
  world.lastPid = std::max(world.lastPid, application.application.pid);
  application.application.bundleIdentifier = given.bundle;
  application.application.regular = given.regular;
  if (!given.withoutLaunchTime) {
    const double usual = startWallClock + (world.seconds > 0 ? world.seconds : -runningSince);
    application.application.launchedAt = given.launchedAt.value_or(usual);
  }
  return startApplication(world, change, std::move(application));
}

Refusal quit(World& world, const std::string& name) {
  const WorldApplication* application = applicationNamed(world, name);
  if (application == nullptr) return "no application is called \"" + name + "\" then";
  const std::string key = application->key;
  endApplication(world, key);
  std::erase_if(world.applications,
                [&](const WorldApplication& running) { return running.key == key; });
  return std::nullopt;
}

// The same application once more, at its old place in the list and under its old process id unless
// it gets another.
Refusal relaunch(World& world, const Change& change) {
  const auto old = std::ranges::find(world.applications, change.target, &WorldApplication::name);
  if (old == world.applications.end()) {
    return "no application is called \"" + change.target + "\" then";
  }
  const auto position = old - world.applications.begin();
  WorldApplication application;
  application.application = old->application;
  application.application.pid = change.application.pid.value_or(old->application.pid);
  application.application.launchedAt =
      change.application.launchedAt.value_or(startWallClock + world.seconds);
  if (change.application.withoutLaunchTime) application.application.launchedAt.reset();
  if (Refusal refusal = quit(world, change.target)) return refusal;
  if (Refusal refusal = startApplication(world, change, std::move(application))) return refusal;
  std::rotate(world.applications.begin() + position, world.applications.end() - 1,
              world.applications.end());
  return std::nullopt;
}

Refusal focus(World& world, const std::string& name) {
  const auto key = world.keys.find(name);
  if (key == world.keys.end()) return unknownName(name);
  if (!isWindow(world.elements.at(key->second))) return "\"" + name + "\" is no window";
  const std::string owner = applicationKeyOf(key->second);
  for (WorldApplication& application : world.applications) {
    if (application.key == owner) application.focused = key->second;
  }
  world.touched.insert(owner);
  return std::nullopt;
}

Refusal setAudio(World& world, const Change& change) {
  std::string bundle = change.target;
  if (const WorldApplication* application = applicationNamed(world, bundle)) {
    bundle = application->application.bundleIdentifier.value_or("");
  } else if (bundle.find('.') == std::string::npos) {
    return "\"" + bundle + "\" is neither an application nor a bundle identifier";
  }
  if (!world.audio) world.audio.emplace();
  std::vector<platform::AudioProcess>& processes = *world.audio;
  auto process = std::ranges::find(processes, bundle, &platform::AudioProcess::bundle);
  if (!change.audio) {
    if (process == processes.end()) return "\"" + bundle + "\" has no audio process then";
    processes.erase(process);
    return std::nullopt;
  }
  if (process == processes.end()) process = processes.insert(processes.end(), {bundle});
  process->input = change.audio->input;
  process->output = change.audio->output;
  return std::nullopt;
}

Refusal setScreen(World& world, const Change& change) {
  world.screenList = change.screenList;
  world.screenEntries = change.entries;
  for (const ScreenEntry& entry : change.entries) {
    if (!entry.owner.empty() && applicationNamed(world, entry.owner) == nullptr) {
      return "no application is called \"" + entry.owner + "\" then";
    }
  }
  return std::nullopt;
}

Refusal changeTree(World& world, const Change& change) {
  const auto found = world.keys.find(change.target);
  if (found == world.keys.end()) return unknownName(change.target);
  const std::string key = found->second;
  if (change.verb == Verb::replace) {
    const std::string parent = world.elements.at(key).parent;
    if (parent.empty()) return "\"" + change.target + "\" stands nowhere then";
    const auto& siblings = world.elements.at(parent).children;
    const auto position = std::ranges::find(siblings, key) - siblings.begin();
    end(world, key);
    return placeAll(world, change.element.children, parent, static_cast<std::size_t>(position));
  }
  if (change.verb == Verb::fill) {
    const std::vector<std::string> children = world.elements.at(key).children;
    for (const std::string& child : children) end(world, child);
  }
  return placeAll(world, change.element.children, key, world.elements.at(key).children.size());
}

// `close`, `detach` and `move`.
Refusal changePlace(World& world, const Change& change) {
  const auto found = world.keys.find(change.target);
  if (found == world.keys.end()) return unknownName(change.target);
  const std::string key = found->second;
  if (isApplication(key)) return "\"" + change.target + "\" is an application";
  if (change.verb == Verb::close) {
    end(world, key);
    return std::nullopt;
  }
  (void)detach(world, key);
  if (change.verb == Verb::detach) return std::nullopt;
  const auto destination = world.keys.find(change.destination);
  if (destination == world.keys.end()) return unknownName(change.destination);
  for (std::string above = destination->second; !above.empty();
       above = world.elements.at(above).parent) {
    if (above == key) return "\"" + change.target + "\" cannot move into itself";
  }
  if (applicationKeyOf(key) != applicationKeyOf(destination->second)) {
    return "\"" + change.destination + "\" belongs to another application";
  }
  world.elements.at(key).parent = destination->second;
  world.elements.at(destination->second).children.push_back(key);
  world.touched.insert(destination->second);
  return std::nullopt;
}

Refusal set(World& world, const Change& change) {
  WorldElement* element = elementNamed(world, change.target);
  if (element == nullptr) return unknownName(change.target);
  ElementDescription& description = element->description;
  for (const auto& [name, value] : change.element.attributes) description.attributes[name] = value;
  if (change.element.text) description.text = change.element.text;
  if (change.element.onScreen) description.onScreen = change.element.onScreen;
  if (change.element.number) element->number = *change.element.number;
  world.touched.insert(world.keys.at(change.target));
  return std::nullopt;
}

// `fails`, `slow` and `works`.
Refusal setTrouble(World& world, const Change& change) {
  WorldElement* element = elementNamed(world, change.target);
  if (element == nullptr) return unknownName(change.target);
  WorldApplication* whole =
      change.attribute.empty() ? applicationNamed(world, change.target) : nullptr;
  ElementDescription& description = element->description;
  if (change.verb == Verb::fail) {
    description.errors[change.attribute] = change.code;
  } else if (change.verb == Verb::slow && whole != nullptr) {
    whole->delay = change.seconds;
  } else if (change.verb == Verb::slow) {
    description.delays[change.attribute] = change.seconds;
  } else if (change.attribute.empty()) {
    description.errors.clear();
    description.delays.clear();
    if (whole != nullptr) whole->delay = 0;
  } else {
    description.errors.erase(change.attribute);
    description.delays.erase(change.attribute);
  }
  world.touched.insert(world.keys.at(change.target));
  return std::nullopt;
}

Refusal setFront(World& world, const std::string& name) {
  if (!name.empty() && applicationNamed(world, name) == nullptr) {
    return "no application is called \"" + name + "\" then";
  }
  world.front = name;
  return std::nullopt;
}

Refusal carryOut(World& world, const Change& change) {
  switch (change.verb) {
    case Verb::start:
      return start(world, change);
    case Verb::relaunch:
      return relaunch(world, change);
    case Verb::quit:
      return quit(world, change.target);
    case Verb::front:
      return setFront(world, change.target);
    case Verb::focus:
      return focus(world, change.target);
    case Verb::trust:
      world.trusted = change.flag;
      return std::nullopt;
    case Verb::audio:
      return setAudio(world, change);
    case Verb::audioEmpty:
      world.audio.emplace();
      return std::nullopt;
    case Verb::audioAbsent:
      world.audio.reset();
      return std::nullopt;
    case Verb::screen:
      return setScreen(world, change);
    case Verb::add:
    case Verb::fill:
    case Verb::replace:
      return changeTree(world, change);
    case Verb::close:
    case Verb::detach:
    case Verb::move:
      return changePlace(world, change);
    case Verb::set:
      return set(world, change);
    case Verb::fail:
    case Verb::slow:
    case Verb::work:
      return setTrouble(world, change);
  }
  return "nobody knows how to do this";
}

}  // namespace

std::string applicationElementKey(std::int32_t pid) {
  return "app:" + std::to_string(pid);
}

std::optional<std::string> apply(World& world, const Change& change) {
  return carryOut(world, change);
}

}  // namespace callmonitor::scenario
