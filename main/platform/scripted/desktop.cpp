#include "platform/scripted/desktop.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace callmonitor::platform {

struct ElementReference {
  std::string key;
};

bool operator==(const Element& left, const Element& right) {
  if (!left.reference || !right.reference) return left.reference == right.reference;
  return left.reference->key == right.reference->key;
}

std::size_t hashOf(const Element& element) {
  return element.reference ? std::hash<std::string>()(element.reference->key) : 0;
}

}  // namespace callmonitor::platform

namespace callmonitor::scripted {
namespace {

void advance(double seconds) {
  desktop().uptime += seconds;
  desktop().wallClock += seconds;
}

void record(const std::string& call) {
  desktop().calls.push_back(call);
  if (desktop().onCall) desktop().onCall(call);
}

}  // namespace

Desktop& desktop() {
  static Desktop current;
  return current;
}

void reset() {
  desktop() = Desktop();
}

platform::Element element(const std::string& key) {
  return {std::make_shared<platform::ElementReference>(platform::ElementReference{key})};
}

std::string applicationKey(std::int32_t pid) {
  return "app:" + std::to_string(pid);
}

Answer textAnswer(std::string text) {
  return {{platform::code::success, std::move(text)}, 0};
}
Answer addressAnswer(std::string address) {
  return {{platform::code::success, platform::Address{std::move(address)}}, 0};
}
Answer flagAnswer(bool flag) {
  return {{platform::code::success, flag}, 0};
}
Answer elementAnswer(const std::string& key) {
  return {{platform::code::success, element(key)}, 0};
}
Answer elementsAnswer(const std::vector<std::string>& keys) {
  std::vector<platform::Element> elements;
  elements.reserve(keys.size());
  for (const std::string& key : keys) elements.push_back(element(key));
  return {{platform::code::success, std::move(elements)}, 0};
}
Answer codeAnswer(std::int32_t code) {
  return {{code, {}}, 0};
}

}  // namespace callmonitor::scripted

namespace callmonitor::platform {

using scripted::desktop;

void prepareMonitoring() {
  scripted::record("prepareMonitoring");
}

void inCycle(const std::function<void()>& cycle) {
  scripted::record("cycle begins");
  cycle();
  scripted::record("cycle ends");
}

bool accessibilityTrusted() {
  scripted::record("trusted");
  return desktop().trusted;
}

std::vector<Application> runningApplications() {
  scripted::record("applications");
  return desktop().applications;
}

std::optional<Application> runningApplication(std::int32_t pid) {
  scripted::record("application " + std::to_string(pid));
  const auto& applications = desktop().applications;
  const auto found = std::ranges::find(applications, pid, &Application::pid);
  return found == applications.end() ? std::nullopt : std::optional(*found);
}

std::optional<Application> frontmostApplication() {
  scripted::record("frontmost");
  const auto& applications = desktop().applications;
  if (!desktop().front) return std::nullopt;
  const auto found = std::ranges::find(applications, *desktop().front, &Application::pid);
  return found == applications.end() ? std::nullopt : std::optional(*found);
}

Element applicationElement(std::int32_t pid, double messageTimeout) {
  scripted::record("open " + std::to_string(pid));
  desktop().messageTimeout = messageTimeout;
  return scripted::element(scripted::applicationKey(pid));
}

Reading readAttribute(const Element& element, std::string_view name) {
  if (!element.reference) return {code::illegalArgument, {}};
  const std::string& key = element.reference->key;
  scripted::record("read " + key + " " + std::string(name));
  const auto found = desktop().elements.find(key);
  if (found == desktop().elements.end()) return {code::invalidElement, {}};
  const auto answer = found->second.find(name);
  if (answer == found->second.end()) return {code::attributeUnsupported, {}};
  if (answer->second.delay > desktop().messageTimeout) {
    scripted::advance(desktop().messageTimeout);
    return {code::cannotComplete, {}};
  }
  Reading reading = answer->second.reading;
  scripted::advance(answer->second.delay);
  return reading;
}

std::int32_t setAttribute(const Element& element, std::string_view name, bool value) {
  if (!element.reference) return code::illegalArgument;
  scripted::record("set " + element.reference->key + " " + std::string(name) +
                   (value ? " true" : " false"));
  return desktop().setAttributeCode;
}

void expectScan(const Element& root, double) {
  scripted::record("scan " + (root.reference ? root.reference->key : std::string()));
}

std::optional<std::vector<OnScreenWindow>> onScreenWindows() {
  scripted::record("windows");
  return desktop().windows;
}

std::optional<std::vector<AudioProcess>> audioProcesses() {
  scripted::record("audio");
  return desktop().audio;
}

double systemUptime() {
  return desktop().uptime;
}

double wallClock() {
  return desktop().wallClock;
}

// Counts up, so that a run gives the same identifiers every time.
std::string randomUUID() {
  char text[40];
  std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012llX",
                static_cast<unsigned long long>(++desktop().identifiersMade));
  return text;
}

void afterDelay(double seconds, std::function<void()> action) {
  desktop().timers.push_back({desktop().uptime + seconds, std::move(action)});
}

void runLoop() {
  while (true) {
    auto& timers = desktop().timers;
    const auto next = std::ranges::min_element(timers, {}, &scripted::Timer::due);
    if (next == timers.end() || next->due > desktop().runUntil) return;
    const scripted::Timer timer = std::move(*next);
    timers.erase(next);
    if (timer.due > desktop().uptime) scripted::advance(timer.due - desktop().uptime);
    timer.action();
  }
}

}  // namespace callmonitor::platform
