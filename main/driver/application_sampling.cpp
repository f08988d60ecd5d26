#include "driver/application_sampling.h"

#include <algorithm>
#include <set>
#include <string>

#include "evidence/call_state.h"
#include "evidence/label_scan.h"
#include "evidence/web_areas.h"
#include "identity/applications.h"
#include "identity/meeting_identity.h"

namespace callmonitor {
namespace {

// Longer titles are cut before they enter a surface.
constexpr std::size_t titleLimit = 200;  // characters

// One application while it is sampled.
struct Sampling {
  const SamplingContext& context;
  std::string bundle;                   // empty for an application without one
  std::optional<std::string> provider;  // of a native meeting client
  bool webClient = false;
  bool generic = false;     // counts only where no table claims the application
  std::vector<Call> calls;  // every tracked call, in order of key
  AppSample sample;

  [[nodiscard]] bool timeLeft() const { return platform::systemUptime() < context.deadline; }
};

std::optional<Element> remembered(const ScanMemory& memory, const std::string& identifier) {
  const auto found = memory.elements.find(identifier);
  return found == memory.elements.end() ? std::nullopt : std::optional(found->second);
}

void enableAccessibility(const Element& application, const Sampling& sampling) {
  if (!chromiumApplication(sampling.bundle)) return;
  auto& enabled = sampling.context.memory.accessibilityEnabled;
  const auto found = enabled.find(sampling.sample.pid);
  if (found != enabled.end() && found->second == sampling.sample.launchedAt) return;
  // A failure is tried again in the next cycle.
  if (platform::setAttribute(application, attributes::enhancedUserInterface, true) ==
      platform::code::success) {
    enabled[sampling.sample.pid] = sampling.sample.launchedAt;
  }
}

// The application's windows; absent unless they were read, which an application without any does
// by an empty list.
std::optional<std::vector<Element>> readWindows(const Element& application) {
  const platform::Reading reading = platform::readAttribute(application, attributes::windows);
  const auto* windows = valueIn<std::vector<Element>>(reading);
  return windows ? std::optional(*windows) : std::nullopt;
}

// Those identities of the application's tracked calls whose elements answer that they no longer
// exist. Every other answer, and none, leaves an identity out.
std::set<std::string> closedElements(const Sampling& sampling, std::string Call::*identity) {
  std::set<std::string> closed;
  for (const Call& call : sampling.calls) {
    if (call.pid != sampling.sample.pid || !sampling.timeLeft()) continue;
    const std::optional<Element> element = remembered(sampling.context.memory, call.*identity);
    if (element && platform::readAttribute(*element, attributes::role).code ==
                       platform::code::invalidElement) {
      closed.insert(call.*identity);
    }
  }
  return closed;
}

// The windows in this cycle's turn, those of tracked calls first.
std::vector<Element> orderedWindows(const std::vector<Element>& windows, const Sampling& sampling) {
  std::vector<Element> callWindows;
  for (const Call& call : sampling.calls) {
    if (call.pid != sampling.sample.pid) continue;
    if (auto window = remembered(sampling.context.memory, call.window)) {
      callWindows.push_back(*window);
    }
  }
  std::vector<Element> ordered = rotated(windows, sampling.context.memory.scanOffset);
  std::stable_partition(ordered.begin(), ordered.end(), [&](const Element& window) {
    return std::ranges::count(callWindows, window) > 0;
  });
  return ordered;
}

// The meeting that a page shows, or the one that it keeps while it shows a landing page.
std::optional<Conference> pageConference(const Element& page, const std::string& window,
                                         const std::string& element, const Sampling& sampling) {
  const platform::Reading reading = platform::readAttribute(page, attributes::url);
  const std::optional<std::string> raw = addressIn(reading);
  if (auto shown = webAreaIdentity(reading.code, raw).conference) return shown;
  return retainedMeetIdentity(raw, sampling.sample.pid, sampling.sample.launchedAt, window, element,
                              sampling.calls);
}

// The meeting that a root may show; absent when it shows none and is not to be scanned.
std::optional<Conference> rootConference(const Element& root, const std::string& window,
                                         const std::string& element, const Sampling& sampling) {
  if (!sampling.webClient) {
    if (sampling.provider) return Conference{*sampling.provider, ""};
    return sampling.generic ? std::optional(Conference{"application", ""}) : std::nullopt;
  }
  std::optional<Conference> shown = pageConference(root, window, element, sampling);
  if (!sampling.provider) return shown;
  // A native client that is a web view is its provider's, whatever page it shows.
  const bool own = shown && shown->provider == *sampling.provider;
  return own ? shown : Conference{*sampling.provider, ""};
}

// Judges one root of a window and adds its surface, where it has one.
void sampleRoot(const Element& root, const Element& window, const std::string& windowIdentity,
                Sampling& sampling) {
  const std::string identity =
      sampling.webClient ? remember(sampling.context.memory, root) : windowIdentity;
  const std::optional<Conference> conference =
      rootConference(root, windowIdentity, identity, sampling);
  if (!conference) return;
  const std::string title = text(window, attributes::title);
  const bool zoomMeeting =
      !sampling.webClient && sampling.provider && nativeZoomMeetingTitle(title);
  const Evidence evidence = labels(root, sampling.webClient, zoomMeeting,
                                   /*nativeZoomPreviewRecovery=*/false, sampling.context.deadline);
  sampling.context.scans.push_back({{root, sampling.webClient, zoomMeeting, false}, evidence});
  sampling.sample.surfaces.push_back(
      {windowIdentity, identity, *conference, evidence.state(conference->provider),
       firstCharacters(title, titleLimit), mediaActive(evidence.controls)});
}

// Goes through the windows and their roots while time is left. A stop leaves the inventory of views
// incomplete: what was not looked at may still be there.
void sampleWindows(const std::vector<Element>& windows, Sampling& sampling) {
  sampling.sample.viewInventoryComplete = true;
  for (const Element& window : orderedWindows(windows, sampling)) {
    if (!sampling.timeLeft()) {
      sampling.sample.viewInventoryComplete = false;
      return;
    }
    const std::string identity = elementID(sampling.context.memory.registry, window);
    WebAreas<Element> areas{{window}, true};
    if (sampling.webClient) areas = webAreas(window, sampling.context.deadline);
    if (!areas.complete) sampling.sample.viewInventoryComplete = false;
    for (const Element& root : areas.roots) {
      if (!sampling.timeLeft()) {
        sampling.sample.viewInventoryComplete = false;
        return;
      }
      sampleRoot(root, window, identity, sampling);
    }
  }
}

// The identifier that may be reported: that of the process now, if it is still the same launch.
std::optional<std::string> reportableBundle(const AppSample& sample) {
  const std::optional<platform::Application> now = platform::runningApplication(sample.pid);
  if (!now) return std::nullopt;
  return observedApplicationBundleID(sample.launchedAt, now->launchedAt, now->bundleIdentifier);
}

}  // namespace

AppSample sampleApplication(const platform::Application& application,
                            const SamplingContext& context) {
  Sampling sampling{context, application.bundleIdentifier.value_or(""), {}, false, false, {}, {}};
  AppSample& sample = sampling.sample;
  sample.pid = application.pid;
  sample.launchedAt = application.launchedAt.value_or(0);
  sample.browser = browserApplication(sampling.bundle);
  sample.standalone = standaloneBrowser(sampling.bundle);
  if (!sampling.timeLeft()) return sample;

  sampling.provider = nativeProvider(sampling.bundle);
  sampling.webClient = webClientApplication(sampling.bundle);
  sample.audio = clientAudio(sampling.bundle, context.audio);
  sampling.generic = genericClient(sampling.bundle, application.regular, sample.audio);
  for (const auto& [key, call] : context.tracker.calls) sampling.calls.push_back(call);

  const Element element = platform::applicationElement(application.pid, messageTimeout);
  enableAccessibility(element, sampling);
  const std::optional<std::vector<Element>> windows = readWindows(element);
  if (windows) {
    sample.windows.emplace();
    for (const Element& window : *windows) sample.windows->insert(remember(context.memory, window));
  }
  sample.closedViews = closedElements(sampling, &Call::element);
  sample.closedWindows = closedElements(sampling, &Call::window);
  if (windows) sampleWindows(*windows, sampling);
  sample.applicationBundleID = reportableBundle(sample);
  return sample;
}

}  // namespace callmonitor
