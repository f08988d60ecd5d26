// The whole path from an attribute's name to the messages that answer it.
#include "platform/linux/element_reading.h"

#include <array>
#include <functional>
#include <string_view>
#include <utility>

#include "platform/linux/address_repair.h"
#include "platform/linux/application_list.h"
#include "platform/linux/desktop.h"
#include "platform/linux/frame_windows.h"
#include "platform/linux/role_map.h"

namespace callmonitor::platform {
namespace {

constexpr std::string_view enhancedInterface = "AXEnhancedUserInterface";

Reading failed(std::int32_t outcome) {
  return {outcome, {}};
}

Reading textReading(std::string text) {
  return {code::success, std::move(text)};
}

Element handle(const ElementReference& parent, ObjectName object, bool topLevel = false) {
  ElementReference reference = parent;
  reference.object = std::move(object);
  reference.application = false;
  reference.topLevel = topLevel;
  return {std::make_shared<const ElementReference>(std::move(reference))};
}

// The moment by which a question that is put now must be answered.
double deadlineFrom(const ElementReference& reference) {
  return systemUptime() + static_cast<double>(reference.limit) / 1e6;
}

// One read of one attribute of one element.
struct Request {
  Desktop& desktop;
  const ElementReference& reference;
  ElementMemory& memory;
  // One for all messages of the read, so that an application that is slow to answer each of them
  // cannot hold a cycle up for longer than one that answers none.
  double deadline = deadlineFrom(reference);

  [[nodiscard]] BusTarget target() const { return {reference.object, reference.limit, deadline}; }
};

// Each of these answers from memory or asks, and gives the code.

std::int32_t needRole(const Request& request) {
  if (request.memory.role) return code::success;
  const auto answer = readRole(request.desktop.bus, request.target());
  if (answer.code != code::success) return answer.code;
  if (answer.value == role::invalid) return code::invalidElement;
  request.memory.role = answer.value;
  return code::success;
}

// Success means also that the element still exists. A window that was destroyed keeps its role but
// loses every state; a part of a window may have none while it is hidden and disabled.
std::int32_t needStates(const Request& request) {
  if (request.memory.states) return code::success;
  const auto answer = readStates(request.desktop.bus, request.target());
  if (answer.code != code::success) return answer.code;
  const bool gone =
      (answer.value & state::defunct) != 0 || (answer.value == 0 && request.reference.topLevel);
  if (gone) return code::invalidElement;
  request.memory.states = answer.value;
  return code::success;
}

std::int32_t needProperties(const Request& request) {
  if (request.memory.properties) return code::success;
  auto answer = readProperties(request.desktop.bus, request.target());
  if (answer.code != code::success) return answer.code;
  if (!answer.value.attributes) {
    auto attributes = readAttributes(request.desktop.bus, request.target());
    alsoAsk(request.desktop, Question::attributes);
    if (attributes.code == code::success) {
      answer.value.attributes = std::move(attributes.value);
    } else if (attributes.code != code::attributeUnsupported) {
      return attributes.code;
    } else {
      answer.value.attributes.emplace();
    }
  }
  request.memory.properties = std::move(answer.value);
  return code::success;
}

using Need = std::int32_t (*)(const Request&);

template <std::size_t count>
std::int32_t needAll(const Request& request, const std::array<Need, count>& needs) {
  for (const Need need : needs) {
    const std::int32_t outcome = need(request);
    if (outcome != code::success) return outcome;
  }
  return code::success;
}

AccessibleFacts factsOf(const Request& request) {
  AccessibleFacts facts;
  facts.role = request.memory.role.value_or(role::invalid);
  facts.states = request.memory.states.value_or(0);
  facts.topLevel = request.reference.topLevel;
  if (request.memory.properties && request.memory.properties->attributes) {
    const ObjectAttributes& attributes = *request.memory.properties->attributes;
    facts.webRoles = attributes.webRoles;
    facts.tag = attributes.tag;
    facts.inputType = attributes.inputType;
  }
  return facts;
}

Reading roleReading(const Request& request) {
  std::int32_t outcome = needAll(request, std::array<Need, 2>{needStates, needRole});
  if (outcome == code::success && roleNeedsAttributes(*request.memory.role)) {
    outcome = needProperties(request);
  }
  if (outcome != code::success) return failed(outcome);
  return textReading(std::string(macRole(factsOf(request))));
}

Reading subroleReading(const Request& request) {
  const std::int32_t outcome =
      needAll(request, std::array<Need, 3>{needStates, needRole, needProperties});
  if (outcome != code::success) return failed(outcome);
  std::string subrole(macSubrole(factsOf(request)));
  return subrole.empty() ? failed(code::noValue) : textReading(std::move(subrole));
}

Reading roleDescriptionReading(const Request& request) {
  const std::int32_t outcome = needAll(request, std::array<Need, 2>{needStates, needProperties});
  if (outcome != code::success) return failed(outcome);
  const std::string& own = request.memory.properties->attributes->roleDescription;
  if (!own.empty()) return textReading(own);
  auto name = readRoleName(request.desktop.bus, request.target());
  return name.code == code::success ? textReading(std::move(name.value)) : failed(name.code);
}

Reading titleReading(const Request& request) {
  const std::int32_t outcome =
      needAll(request, std::array<Need, 3>{needStates, needRole, needProperties});
  if (outcome != code::success) return failed(outcome);
  if (nameIsValue(*request.memory.role)) return failed(code::noValue);
  if (request.reference.topLevel) {
    if (auto shown = shownName(request.desktop, request.reference.object)) {
      return textReading(std::move(*shown));
    }
    return textReading(withoutDirectionMarks(request.memory.properties->name));
  }
  return textReading(request.memory.properties->name);
}

Reading valueReading(const Request& request) {
  std::int32_t outcome = needAll(request, std::array<Need, 2>{needStates, needRole});
  if (outcome != code::success) return failed(outcome);
  if (nameIsValue(*request.memory.role)) {
    outcome = needProperties(request);
    return outcome == code::success ? textReading(request.memory.properties->name)
                                    : failed(outcome);
  }
  const std::string_view name = macRole(factsOf(request));
  if (name != "AXTextField" && name != "AXTextArea") return failed(code::noValue);
  auto text = readText(request.desktop.bus, request.target());
  return text.code == code::success ? textReading(std::move(text.value)) : failed(text.code);
}

// Help text is all that this interface's description holds; read as a label it would turn a page
// that merely explains its buttons into a call.
Reading descriptionReading(const Request& request) {
  const std::int32_t outcome = needStates(request);
  return failed(outcome == code::success ? code::noValue : outcome);
}

// What is merely scrolled out of sight is not hidden.
Reading hiddenReading(const Request& request) {
  const std::int32_t outcome = needStates(request);
  if (outcome != code::success) return failed(outcome);
  return {code::success, (*request.memory.states & state::visible) == 0};
}

Reading enabledReading(const Request& request) {
  const std::int32_t outcome = needStates(request);
  if (outcome != code::success) return failed(outcome);
  return {code::success, (*request.memory.states & state::enabled) != 0};
}

Reading childrenReading(const Request& request) {
  const std::int32_t outcome = needStates(request);
  if (outcome != code::success) return failed(outcome);
  std::vector<Element> elements;
  const auto& properties = request.memory.properties;
  if (properties && properties->childCount == 0) {
    descendScan(request.desktop, request.reference, {});
    return {code::success, std::move(elements)};
  }
  auto children = readChildren(request.desktop.bus, request.target());
  if (children.code != code::success) return failed(children.code);
  descendScan(request.desktop, request.reference, children.value);
  elements.reserve(children.value.size());
  for (ObjectName& child : children.value) {
    elements.push_back(handle(request.reference, std::move(child)));
  }
  return {code::success, std::move(elements)};
}

Reading addressReading(const Request& request) {
  const std::int32_t outcome = needAll(request, std::array<Need, 2>{needStates, needRole});
  if (outcome != code::success) return failed(outcome);
  if (*request.memory.role != role::documentWeb) return failed(code::attributeUnsupported);
  const auto address = readDocumentAddress(request.desktop.bus, request.target());
  if (address.code != code::success) return failed(address.code);
  if (address.value.empty()) return failed(code::noValue);
  return {code::success, Address{repairedAddress(address.value)}};
}

Reading identifierReading(const Request& request) {
  const std::int32_t outcome = needAll(request, std::array<Need, 2>{needStates, needProperties});
  if (outcome != code::success) return failed(outcome);
  const std::string& identifier = request.memory.properties->attributes->identifier;
  return identifier.empty() ? failed(code::noValue) : textReading(identifier);
}

// What the window server is slow to say is not the application's fault: its own time begins after.
WindowedApplication clientOf(const Request& request) {
  auto windows = clientWindows(*request.desktop.x11);
  const ElementReference& reference = request.reference;
  return {{reference.object, reference.limit, deadlineFrom(reference)},
          reference.pid,
          std::move(windows)};
}

// A list of windows that was there before is late, not missing: without it windows would seem to
// come and go.
bool windowListLate(const Request& request, const WindowedApplication& client) {
  return !client.listed && x11Session() && !request.desktop.applications.windows.empty();
}

Reading windowsReading(const Request& request) {
  if (!request.reference.application) return failed(code::attributeUnsupported);
  const WindowedApplication client = clientOf(request);
  if (windowListLate(request, client)) return failed(code::cannotComplete);
  auto windows = readWindows(request.desktop, client);
  if (windows.code != code::success) return failed(windows.code);
  std::vector<Element> elements;
  for (FrameWindow& window : windows.value) {
    elements.push_back(handle(request.reference, std::move(window.frame), true));
  }
  return {code::success, std::move(elements)};
}

Reading focusedWindowReading(const Request& request) {
  if (!request.reference.application) return failed(code::attributeUnsupported);
  const auto active = activeWindow(*request.desktop.x11);
  if (!active) return failed(code::noValue);
  const WindowedApplication client = clientOf(request);
  if (windowListLate(request, client)) return failed(code::cannotComplete);
  auto window = readFocusedWindow(request.desktop, client, *active);
  if (window.code != code::success) return failed(window.code);
  return {code::success, handle(request.reference, std::move(window.value), true)};
}

// What the answers to the questions are put to an element for, whatever it is: an attribute that
// depends on one only for some elements is not listed with it.
enum class Needs { states, role, properties, roleAndProperties, other };

std::vector<Question> questionsOf(Needs needs) {
  switch (needs) {
    case Needs::states:
      return {Question::states};
    case Needs::role:
      return {Question::states, Question::role};
    case Needs::properties:
      return {Question::states, Question::properties};
    case Needs::roleAndProperties:
      return {Question::states, Question::role, Question::properties};
    case Needs::other:
      break;
  }
  return {};
}

struct Attribute {
  std::string_view name;
  Reading (*read)(const Request&);
  Needs needs;
};

constexpr std::array attributes{
    Attribute{"AXRole", roleReading, Needs::role},
    Attribute{"AXSubrole", subroleReading, Needs::roleAndProperties},
    Attribute{"AXRoleDescription", roleDescriptionReading, Needs::properties},
    Attribute{"AXTitle", titleReading, Needs::roleAndProperties},
    Attribute{"AXDescription", descriptionReading, Needs::states},
    Attribute{"AXValue", valueReading, Needs::role},
    Attribute{"AXHidden", hiddenReading, Needs::states},
    Attribute{"AXEnabled", enabledReading, Needs::states},
    Attribute{"AXChildren", childrenReading, Needs::states},
    Attribute{"AXURL", addressReading, Needs::role},
    Attribute{"AXIdentifier", identifierReading, Needs::properties},
    Attribute{"AXWindows", windowsReading, Needs::other},
    Attribute{"AXFocusedWindow", focusedWindowReading, Needs::other},
};

// Anything but success says why the element cannot be asked at all.
std::int32_t askable(const Desktop& here, const Element& element) {
  if (!element.reference) return code::illegalArgument;
  const bool reachable = !element.reference->object.bus.empty() && here.bus.connection &&
                         element.reference->generation == here.bus.generation;
  return reachable ? code::success : code::cannotComplete;
}

// Whether the element that is being read has had this attribute read already.
bool askedAgain(const Desktop& here, const ElementReference& reference, std::string_view name) {
  const ElementMemory& memory = here.element;
  return memory.generation == reference.generation && memory.object == reference.object &&
         memory.asked.contains(name);
}

// The memory that this read may use: the desktop's for the element that is being read, else a
// fresh one that ends with the read.
ElementMemory& memoryFor(Desktop& here, const ElementReference& reference, std::string_view name,
                         ElementMemory& fresh) {
  if (!here.element.active) return fresh;
  ElementMemory& memory = here.element;
  const bool same = memory.generation == reference.generation &&
                    memory.object == reference.object && !askedAgain(here, reference, name);
  if (!same) {
    memory = {};
    memory.active = true;
    memory.generation = reference.generation;
    memory.object = reference.object;
  }
  memory.asked.emplace(name);
  return memory;
}

}  // namespace

bool operator==(const Element& left, const Element& right) {
  if (left.reference == right.reference) return true;
  if (!left.reference || !right.reference) return false;
  const ElementReference& one = *left.reference;
  const ElementReference& other = *right.reference;
  if (one.object.bus.empty() && other.object.bus.empty()) return one.pid == other.pid;
  return one.generation == other.generation && one.object == other.object;
}

std::size_t hashOf(const Element& element) {
  if (!element.reference) return 0;
  const ElementReference& reference = *element.reference;
  if (reference.object.bus.empty()) return std::hash<std::int32_t>{}(reference.pid);
  // An application's objects differ in their paths only.
  return std::hash<std::string>{}(reference.object.path) ^
         (std::hash<std::string>{}(reference.object.bus) << 1);
}

Element applicationElement(std::int32_t pid, double messageTimeout) {
  Desktop& here = desktop();
  ElementReference reference;
  reference.object = registeredRoot(here, pid).value_or(ObjectName{});
  reference.generation = here.bus.generation;
  reference.pid = pid;
  reference.application = true;
  // No limit would mean the library's own, which is far too long.
  if (messageTimeout > 0) reference.limit = static_cast<std::uint64_t>(messageTimeout * 1e6);
  return {std::make_shared<const ElementReference>(std::move(reference))};
}

Reading readAttribute(const Element& element, std::string_view name) {
  Desktop& here = desktop();
  const std::int32_t outcome = askable(here, element);
  if (outcome != code::success) return failed(outcome);
  for (const Attribute& attribute : attributes) {
    if (attribute.name != name) continue;
    followScan(here, *element.reference, questionsOf(attribute.needs),
               askedAgain(here, *element.reference, name));
    // The walk that this read is part of may have lost its bus while it was being followed.
    if (!here.bus.connection) return failed(code::cannotComplete);
    ElementMemory fresh;
    return attribute.read(
        {here, *element.reference, memoryFor(here, *element.reference, name, fresh)});
  }
  return failed(code::attributeUnsupported);
}

std::int32_t setAttribute(const Element& element, std::string_view name, bool value) {
  Desktop& here = desktop();
  const std::int32_t outcome = askable(here, element);
  if (outcome != code::success) return outcome;
  if (name != enhancedInterface || !value || !element.reference->application) {
    return code::attributeUnsupported;
  }
  // Browsers open the tree of their pages for whoever asks for the attributes of their root.
  const auto opened =
      readAttributes(here.bus, {element.reference->object, element.reference->limit});
  return opened.code;
}

}  // namespace callmonitor::platform
