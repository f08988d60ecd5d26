// Failures are given on and never remembered.
#include "platform/linux/element_request.h"

#include <utility>

#include "platform/linux/accessible_object.h"
#include "platform/linux/scan_ahead.h"

namespace callmonitor::platform {

std::int32_t needRole(const Request& request) {
  if (request.memory.role) return code::success;
  const auto answer = readRole(request.desktop.bus, request.target());
  if (answer.code != code::success) return answer.code;
  if (answer.value == role::invalid) return code::invalidElement;
  request.memory.role = answer.value;
  return code::success;
}

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

}  // namespace callmonitor::platform
