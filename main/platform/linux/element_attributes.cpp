// The one place that says what the answers of an application mean as attributes.
#include "platform/linux/element_attributes.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/address_repair.h"
#include "platform/linux/desktop.h"
#include "platform/linux/frame_windows.h"
#include "platform/linux/role_map.h"
#include "platform/linux/scan_ahead.h"

namespace callmonitor::platform {
namespace {

Reading failed(std::int32_t outcome) {
  return {outcome, {}};
}

Reading textReading(std::string text) {
  return {code::success, std::move(text)};
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
    elements.push_back(elementBeside(request.reference, std::move(child)));
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
    elements.push_back(elementBeside(request.reference, std::move(window.frame), true));
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
  return {code::success, elementBeside(request.reference, std::move(window.value), true)};
}

// Every read looks first whether the element still exists.
constexpr std::array statesOnly{Question::states};
constexpr std::array roleOnly{Question::states, Question::role};
constexpr std::array propertiesOnly{Question::states, Question::properties};
constexpr std::array roleAndProperties{Question::states, Question::role, Question::properties};

constexpr std::array attributes{
    Attribute{"AXRole", roleReading, roleOnly},
    Attribute{"AXSubrole", subroleReading, roleAndProperties},
    Attribute{"AXRoleDescription", roleDescriptionReading, propertiesOnly},
    Attribute{"AXTitle", titleReading, roleAndProperties},
    Attribute{"AXDescription", descriptionReading, statesOnly},
    Attribute{"AXValue", valueReading, roleOnly},
    Attribute{"AXHidden", hiddenReading, statesOnly},
    Attribute{"AXEnabled", enabledReading, statesOnly},
    Attribute{"AXChildren", childrenReading, statesOnly},
    Attribute{"AXURL", addressReading, roleOnly},
    Attribute{"AXIdentifier", identifierReading, propertiesOnly},
    Attribute{"AXWindows", windowsReading, {}},
    Attribute{"AXFocusedWindow", focusedWindowReading, {}},
};

}  // namespace

const Attribute* attributeNamed(std::string_view name) {
  for (const Attribute& each : attributes) {
    if (each.name == name) return &each;
  }
  return nullptr;
}

}  // namespace callmonitor::platform
