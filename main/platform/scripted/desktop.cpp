#include "platform/scripted/desktop.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
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
  if (desktop().pace && seconds > 0) desktop().pace(seconds);
}

// Every call on the seam begins here; `words` are put together as its entry in the record.
template <class... Words>
void begin(const Words&... words) {
  if (desktop().change && desktop().uptime >= desktop().nextChange) desktop().change();
  if (!desktop().recordCalls && !desktop().onCall) return;
  std::string call;
  ((call += words), ...);
  if (desktop().recordCalls) desktop().calls.push_back(call);
  if (desktop().onCall) desktop().onCall(call);
}

// The key of the application that a key belongs to; empty where keys say nothing about it.
std::string_view applicationOf(std::string_view key) {
  return key.starts_with("app:") ? key.substr(0, key.find('/')) : std::string_view();
}

// What an element without entry answers.
std::int32_t missingElementCode(std::string_view key) {
  const std::string_view application = applicationOf(key);
  const bool vanished = !application.empty() && !desktop().elements.contains(application);
  return vanished ? platform::code::cannotComplete : platform::code::invalidElement;
}

[[noreturn]] void refuse(std::string_view key, std::string_view name) {
  std::fprintf(stderr, "scripted desktop: nobody wrote down what \"%.*s\" answers for %.*s\n",
               static_cast<int>(key.size()), key.data(), static_cast<int>(name.size()),
               name.data());
  std::abort();
}

double delayOf(std::string_view key, const Answer& answer) {
  if (answer.delay > 0 || desktop().delays.empty()) return answer.delay;
  const auto found = desktop().delays.find(applicationOf(key));
  return found == desktop().delays.end() ? 0 : found->second;
}

// Lets the time pass that a message to this element takes. False when it timed out.
bool deliver(std::string_view key, const Answer& answer) {
  const double delay = delayOf(key, answer);
  const bool inTime = delay <= desktop().messageTimeout;
  advance(inTime ? delay : desktop().messageTimeout);
  return inTime;
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
  scripted::begin("prepareMonitoring");
}

void prepareLooking() {
  scripted::begin("prepareLooking");
}

void inCycle(const std::function<void()>& cycle) {
  scripted::begin("cycle begins");
  cycle();
  scripted::begin("cycle ends");
}

bool accessibilityTrusted() {
  scripted::begin("trusted");
  return desktop().trusted;
}

std::vector<Application> runningApplications() {
  scripted::begin("applications");
  return desktop().applications;
}

std::optional<Application> runningApplication(std::int32_t pid) {
  scripted::begin("application ", std::to_string(pid));
  const auto& applications = desktop().applications;
  const auto found = std::ranges::find(applications, pid, &Application::pid);
  return found == applications.end() ? std::nullopt : std::optional(*found);
}

std::optional<Application> frontmostApplication() {
  scripted::begin("frontmost");
  const auto& applications = desktop().applications;
  if (!desktop().front) return std::nullopt;
  const auto found = std::ranges::find(applications, *desktop().front, &Application::pid);
  return found == applications.end() ? std::nullopt : std::optional(*found);
}

Element applicationElement(std::int32_t pid, double messageTimeout) {
  scripted::begin("open ", std::to_string(pid));
  desktop().messageTimeout = messageTimeout;
  return scripted::element(scripted::applicationKey(pid));
}

Reading readAttribute(const Element& element, std::string_view name) {
  if (!element.reference) return {code::illegalArgument, {}};
  const std::string& key = element.reference->key;
  scripted::begin("read ", key, " ", name);
  const auto found = desktop().elements.find(key);
  const bool exists = found != desktop().elements.end();
  scripted::Answer answer{
      {exists ? code::attributeUnsupported : scripted::missingElementCode(key), {}}, 0};
  if (exists) {
    const auto written = found->second.find(name);
    if (written != found->second.end()) {
      answer = written->second;
    } else if (desktop().strict) {
      scripted::refuse(key, name);
    }
  }
  return scripted::deliver(key, answer) ? answer.reading : Reading{code::cannotComplete, {}};
}

std::int32_t setAttribute(const Element& element, std::string_view name, bool value) {
  if (!element.reference) return code::illegalArgument;
  const std::string& key = element.reference->key;
  scripted::begin("set ", key, " ", name, value ? " true" : " false");
  scripted::Answer answer{{desktop().setAttributeCode, {}}, 0};
  const auto found = desktop().elements.find(key);
  if (found != desktop().elements.end()) {
    const auto written = found->second.find(name);
    if (written != found->second.end()) answer = written->second;
  } else if (desktop().strict) {
    answer.reading.code = scripted::missingElementCode(key);
  }
  return scripted::deliver(key, answer) ? answer.reading.code : code::cannotComplete;
}

void expectScan(const Element& root, double, int) {
  scripted::begin("scan ", root.reference ? root.reference->key : std::string());
}

void expectSearch(const Element& root, double, int) {
  scripted::begin("search ", root.reference ? root.reference->key : std::string());
}

std::optional<std::vector<OnScreenWindow>> onScreenWindows() {
  scripted::begin("windows");
  return desktop().windows;
}

std::optional<std::vector<AudioProcess>> audioProcesses() {
  scripted::begin("audio");
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
