#include "doctor/examination.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "doctor/classification.h"
#include "evidence/attributes.h"
#include "platform/platform.h"

namespace callmonitor::doctor {
namespace {

using platform::Reading;

// For attributes that are asked for in messages of their own. A desktop may answer several others
// from one message, and the time of each would say nothing.
Reading timedRead(const Element& element, std::string_view name, ReadTimes& times) {
  const double before = platform::systemUptime();
  Reading reading = platform::readAttribute(element, name);
  times.seconds.push_back(platform::systemUptime() - before);
  return reading;
}

WindowFinding lookAtWindow(const Element& window, ReadTimes& times) {
  const Reading title = timedRead(window, attributes::title, times);
  WindowFinding finding{title.code, std::nullopt};
  if (const auto* text = valueIn<std::string>(title)) finding.title = *text;
  timedRead(window, attributes::children, times);
  return finding;
}

WindowsFinding lookAtWindows(const platform::Application& application) {
  WindowsFinding finding;
  const double deadline = platform::systemUptime() + applicationBudget;
  const Element element = platform::applicationElement(application.pid, messageTimeout);
  const Reading reading = timedRead(element, attributes::windows, finding.times);
  finding.code = reading.code;
  const auto* windows = valueIn<std::vector<Element>>(reading);
  if (windows == nullptr) return finding;
  finding.count = windows->size();
  for (const Element& window : *windows) {
    if (finding.looked.size() == windowLimit || platform::systemUptime() >= deadline) break;
    finding.looked.push_back(lookAtWindow(window, finding.times));
  }
  return finding;
}

bool audioKnown() {
  bool known = false;
  platform::inCycle([&known] { known = platform::audioProcesses().has_value(); });
  return known;
}

void lookWhenHeard(double deadline, const std::function<void(const Findings&)>& told) {
  if (!audioKnown() && platform::systemUptime() < deadline) {
    platform::afterDelay(audioPeriod, [deadline, told] { lookWhenHeard(deadline, told); });
    return;
  }
  Findings findings;
  platform::inCycle([&findings] { findings = examine(); });
  told(findings);
}

}  // namespace

std::optional<double> median(const ReadTimes& times) {
  if (times.seconds.empty()) return std::nullopt;
  std::vector<double> sorted = times.seconds;
  std::sort(sorted.begin(), sorted.end());
  const std::size_t middle = sorted.size() / 2;
  if (sorted.size() % 2 == 1) return sorted[middle];
  return (sorted[middle - 1] + sorted[middle]) / 2;
}

std::optional<double> longest(const ReadTimes& times) {
  if (times.seconds.empty()) return std::nullopt;
  return *std::max_element(times.seconds.begin(), times.seconds.end());
}

Findings examine() {
  Findings findings;
  findings.trusted = platform::accessibilityTrusted();
  findings.uptime = platform::systemUptime();
  findings.wallClock = platform::wallClock();
  findings.front = platform::frontmostApplication();
  findings.onScreen = platform::onScreenWindows();
  findings.audio = platform::audioProcesses();
  for (const platform::Application& application : platform::runningApplications()) {
    ApplicationFinding finding{
        application, kindOf(application, findings.audio),
        clientAudio(application.bundleIdentifier.value_or(""), findings.audio), std::nullopt};
    if (findings.trusted && mayBeOpened(application)) {
      finding.windows = lookAtWindows(application);
    }
    findings.applications.push_back(std::move(finding));
  }
  return findings;
}

void visit(std::function<void(const Findings&)> told) {
  platform::prepareLooking();
  const double deadline = platform::systemUptime() + audioPatience;
  platform::afterDelay(0, [deadline, told = std::move(told)] { lookWhenHeard(deadline, told); });
}

}  // namespace callmonitor::doctor
