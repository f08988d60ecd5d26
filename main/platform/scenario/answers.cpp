// What a scenario's desktop answers when it is read.
#include <algorithm>
#include <utility>

#include "platform/scenario/element_kinds.h"
#include "platform/scenario/world.h"

namespace callmonitor::scenario {
namespace {

std::vector<Reference> references(const std::vector<std::string>& keys) {
  std::vector<Reference> all;
  all.reserve(keys.size());
  for (const std::string& key : keys) all.push_back({key});
  return all;
}

// A name in a value becomes the key that the element has now; a name that nothing has any more
// stays, and is the key of no element.
std::string keyOf(const World& world, const std::string& name) {
  const auto found = world.keys.find(name);
  return found == world.keys.end() ? name : found->second;
}

Value resolved(const World& world, Value value) {
  if (auto* one = std::get_if<Reference>(&value)) one->name = keyOf(world, one->name);
  if (auto* several = std::get_if<std::vector<Reference>>(&value)) {
    for (Reference& reference : *several) reference.name = keyOf(world, reference.name);
  }
  return value;
}

using Answers = std::map<std::string, Answer>;

Answer success(Value value) {
  return {{platform::code::success, std::move(value)}, 0};
}

Answer failing(std::int32_t code) {
  return {{code, {}}, 0};
}

void addApplicationAnswers(const World& world, const WorldElement& element, const std::string& key,
                           Answers& answers) {
  answers["AXWindows"] = success(references(element.children));
  answers["AXEnhancedUserInterface"] = success(false);
  const auto application = std::ranges::find(world.applications, key, &WorldApplication::key);
  if (application != world.applications.end() && application->focused) {
    answers["AXFocusedWindow"] = success(Reference{*application->focused});
  } else if (!element.children.empty()) {
    answers["AXFocusedWindow"] = success(Reference{element.children.front()});
  } else {
    answers["AXFocusedWindow"] = failing(platform::code::noValue);
  }
}

Answers defaultAnswers(const World& world, const WorldElement& element, const std::string& key) {
  const ElementKind kind = elementKind(element.description.kind);
  Answers answers;
  answers["AXRole"] = success(kind.role);
  answers["AXSubrole"] =
      kind.subrole.empty() ? failing(platform::code::noValue) : success(kind.subrole);
  answers["AXRoleDescription"] = failing(platform::code::noValue);
  answers["AXTitle"] = success(std::string());
  answers["AXDescription"] = success(std::string());
  answers["AXValue"] = failing(platform::code::noValue);
  answers["AXHidden"] = failing(platform::code::attributeUnsupported);
  answers["AXEnabled"] = success(true);
  answers["AXChildren"] = success(references(element.children));
  if (element.description.kind == applicationKind) {
    addApplicationAnswers(world, element, key, answers);
  }
  if (element.description.text) {
    answers[kind.textAttribute] = success(*element.description.text);
  }
  return answers;
}

std::optional<std::string> titleOf(const World& world, const std::string& key) {
  const Answers answers = answersOf(world, key);
  const auto& reading = answers.at("AXTitle").reading;
  const auto* title = std::get_if<std::string>(&reading.value);
  return reading.code == platform::code::success && title != nullptr ? std::optional(*title)
                                                                     : std::nullopt;
}

}  // namespace

std::map<std::string, Answer> answersOf(const World& world, const std::string& key) {
  const auto found = world.elements.find(key);
  if (found == world.elements.end()) return {};
  const WorldElement& element = found->second;
  const ElementDescription& description = element.description;
  Answers answers = defaultAnswers(world, element, key);
  for (const auto& [name, value] : description.attributes) {
    answers[name] = success(resolved(world, value));
  }
  for (const auto& [name, code] : description.errors) {
    if (!name.empty()) answers[name] = failing(code);
  }
  const auto whole = description.errors.find("");
  if (whole != description.errors.end()) {
    for (auto& [name, answer] : answers) answer = failing(whole->second);
  }
  const auto delay = description.delays.find("");
  if (delay != description.delays.end()) {
    for (auto& [name, answer] : answers) answer.delay = delay->second;
  }
  for (const auto& [name, seconds] : description.delays) {
    const auto answer = answers.find(name);
    if (answer != answers.end()) answer->second.delay = seconds;
  }
  return answers;
}

std::optional<std::vector<platform::OnScreenWindow>> screenOf(const World& world) {
  if (world.screenList == ScreenList::absent) return std::nullopt;
  std::vector<platform::OnScreenWindow> windows;
  if (world.screenList == ScreenList::given) {
    for (const ScreenEntry& entry : world.screenEntries) {
      windows.push_back(entry.window);
      const auto owner =
          std::ranges::find(world.applications, entry.owner, &WorldApplication::name);
      if (owner != world.applications.end()) windows.back().ownerPid = owner->application.pid;
    }
    return windows;
  }
  for (const WorldApplication& application : world.applications) {
    for (const std::string& key : world.elements.at(application.key).children) {
      const WorldElement& window = world.elements.at(key);
      if (!window.description.onScreen.value_or(true)) continue;
      windows.push_back({application.application.pid, titleOf(world, key), 0, window.number});
    }
  }
  return windows;
}

const WorldApplication* frontOf(const World& world) {
  const auto found = std::ranges::find(world.applications, world.front, &WorldApplication::name);
  return found == world.applications.end() ? nullptr : &*found;
}

}  // namespace callmonitor::scenario
