// The accessibility server: answers messages about the elements of the desktop's world.
#include <ApplicationServices/ApplicationServices.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"
#include "macos/standins/text.h"

namespace callmonitor::standins {
namespace {

// What a reference that was told nothing waits for an answer, in seconds.
constexpr double systemTimeout = 6;

std::string_view applicationOf(std::string_view key) {
  return key.substr(0, key.find('/'));
}

const AttributeFault* faultOf(const std::string& key, const std::string& name) {
  const auto& faults = desktop().attributeFaults;
  for (const auto& place :
       {std::pair(key, name), std::pair(key, std::string()), std::pair(std::string(), name),
        std::pair(std::string(), std::string())}) {
    const auto found = faults.find(place);
    if (found != faults.end()) return &found->second;
  }
  return nullptr;
}

// What an element says; absent where the world has no such attribute.
std::optional<scenario::Answer> answerOf(const std::string& key, const std::string& name) {
  const auto& answers = desktop().answers;
  const auto found = answers.find(key);
  if (found == answers.end()) {
    // Of an application that does not run any more there is nobody to answer.
    const bool runs = answers.contains(std::string(applicationOf(key)));
    return scenario::Answer{{runs ? kAXErrorInvalidUIElement : kAXErrorCannotComplete, {}}, 0};
  }
  const auto written = found->second.find(name);
  return written == found->second.end() ? std::nullopt : std::optional(written->second);
}

double delayOf(const std::string& key, double own) {
  if (own > 0) return own;
  for (const auto& running : desktop().world.applications) {
    if (running.key == applicationOf(key)) return running.delay;
  }
  return 0;
}

// Lets the time pass that a message takes. False when it timed out.
bool deliver(const ElementHandle& element, double delay) {
  const double timeout = element.messageTimeout > 0 ? element.messageTimeout : systemTimeout;
  advance(std::min(delay, timeout));
  return delay <= timeout;
}

void record(std::string_view kind, const ElementHandle& element, const std::string& name) {
  if (element.messageTimeout <= 0) ++desktop().messagesWithoutTimeout;
  if (!desktop().recordMessages) return;
  desktop().messages.push_back(std::string(kind) + " " + element.key + " " + name);
}

// The frameworks leave things behind in the pool that is there.
void leaveSomethingBehind() {
  keepInPool(made(Geometry{}));
}

}  // namespace
}  // namespace callmonitor::standins

using namespace callmonitor::standins;

extern "C" {

Boolean AXIsProcessTrusted() {
  arrive("AXIsProcessTrusted");
  return desktop().world.trusted ? 1 : 0;
}

CFTypeID AXUIElementGetTypeID() {
  static const CFTypeID type = Payload(ElementHandle{}).index();
  return type;
}

AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  if (desktop().elementsFail) return nullptr;
  return static_cast<AXUIElementRef>(
      handedOut(made(ElementHandle{callmonitor::scenario::applicationElementKey(pid)})));
}

AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds) {
  // Whole milliseconds, so that 0.2 of either precision is the same.
  ElementHandle& told = usedAs<ElementHandle>(element);
  if (desktop().timeoutCode) return static_cast<AXError>(*desktop().timeoutCode);
  told.messageTimeout = std::round(static_cast<double>(seconds) * 1000) / 1000;
  return kAXErrorSuccess;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value) {
  const ElementHandle& asked = usedAs<ElementHandle>(element);
  const std::string name = utf8Of(usedAs<Text>(attribute).units);
  arrive("AXUIElementCopyAttributeValue");
  record("copy", asked, name);
  leaveSomethingBehind();
  const AttributeFault* fault = faultOf(asked.key, name);
  std::optional<callmonitor::scenario::Answer> answer = answerOf(asked.key, name);
  if (!answer && (fault == nullptr || !fault->code)) {
    refuse("nobody wrote down what \"" + asked.key + "\" answers for " + name);
  }
  if (!answer) answer.emplace();
  if (fault != nullptr && fault->code) answer->reading = {*fault->code, {}};
  double delay = answer->delay;
  if (fault != nullptr && fault->delay) delay = *fault->delay;
  if (!deliver(asked, delayOf(asked.key, delay))) return kAXErrorCannotComplete;
  const bool given = fault != nullptr && fault->value;
  Object* object = given ? fault->value() : objectOf(answer->reading.value);
  // On an error there is usually nothing, and then the place for it is left alone.
  if (object != nullptr || answer->reading.code == kAXErrorSuccess) *value = handedOut(object);
  return static_cast<AXError>(answer->reading.code);
}

AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value) {
  const ElementHandle& asked = usedAs<ElementHandle>(element);
  const std::string name = utf8Of(usedAs<Text>(attribute).units);
  const bool flag = usedAs<Flag>(value).value;
  arrive("AXUIElementSetAttributeValue");
  record(flag ? "set" : "clear", asked, name);
  leaveSomethingBehind();
  const auto answer = answerOf(asked.key, name);
  const double delay = desktop().setDelay.value_or(answer ? answer->delay : 0);
  if (!deliver(asked, delayOf(asked.key, delay))) return kAXErrorCannotComplete;
  const std::int32_t code = answer ? answer->reading.code : kAXErrorSuccess;
  return static_cast<AXError>(desktop().setCode.value_or(code));
}

}  // extern "C"
