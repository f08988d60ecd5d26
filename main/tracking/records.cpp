#include "tracking/records.h"

#include <algorithm>

#include "evidence/call_state.h"
#include "evidence/label_rules.h"
#include "platform/platform.h"
#include "text/unicode.h"

namespace callmonitor {
namespace {

constexpr std::int64_t schemaVersion = 1;
constexpr std::size_t clientBundleLimit = 256;  // characters
constexpr double millisecondsPerSecond = 1000.0;

Record versioned() {
  return {{"version", schemaVersion},
          {"observedAt", platform::wallClock() * millisecondsPerSecond}};
}

// The number of the one on-screen window that is the call's for certain.
std::optional<std::int64_t> screenWindowId(const Observation& observation) {
  const Call& call = observation.call;
  if (observation.state != CallState::joined || call.title.empty()) return std::nullopt;
  // A process identifier may have been given to another process since.
  const std::optional<platform::Application> application = platform::runningApplication(call.pid);
  if (!application || application->launchedAt != call.launchedAt) return std::nullopt;
  const std::optional<std::vector<platform::OnScreenWindow>> windows = platform::onScreenWindows();
  if (!windows) return std::nullopt;
  const auto matching = [&](const platform::OnScreenWindow& window) {
    return window.ownerPid == call.pid && window.name == call.title && window.layer == 0;
  };
  if (std::ranges::count_if(*windows, matching) != 1) return std::nullopt;
  return std::ranges::find_if(*windows, matching)->number;
}

JsonValue listOrNull(const std::vector<std::string>& texts) {
  if (texts.empty()) return nullptr;
  return texts;
}

// What the controls of a scan offer, for whoever has to find out why a client was not recognised.
void addControlTests(const Evidence& evidence, const std::string& provider, Record& record) {
  std::vector<std::string> controls;
  for (const std::string& control : evidence.controls) controls.push_back(normalized(control));
  const auto some = [&](const Pattern& pattern) {
    return std::ranges::any_of(controls,
                               [&](const auto& label) { return matches(label, pattern); });
  };
  const auto someEqual = [&](std::string_view phrase) {
    return std::ranges::count(controls, phrase) > 0;
  };
  record["audio"] =
      some(lobbyAudioPattern) || (provider == "zoom" && someEqual(phrases::zoomAudio));
  record["video"] = some(lobbyVideoPattern);
  record["join"] = some(joinControlPattern);
  record["start"] = someEqual(phrases::zoomStart);
  record["previewOption"] = std::ranges::any_of(controls, [](const std::string& label) {
    return label.find(phrases::zoomPreviewOption) != std::string::npos;
  });
  record["lobby"] = meetingLobby(evidence.controls, provider);
}

}  // namespace

Record serializedObservation(const Observation& observation,
                             const std::optional<std::string>& applicationBundleID) {
  const Call& call = observation.call;
  Record record = versioned();
  record["source"] = std::string("native");
  record["provider"] = call.conference.provider;
  record["callKey"] = call.conference.key;
  record["sessionId"] = call.id;
  record["sequence"] = call.sequence;
  record["state"] = std::string(stateWord(observation.state));
  record["title"] = call.title;
  record["mediaActive"] = observation.state == CallState::joined && call.mediaActive;
  const std::optional<std::string>& bundle =
      call.applicationBundleID ? call.applicationBundleID : applicationBundleID;
  if (bundle) record["applicationBundleId"] = *bundle;
  if (const auto number = screenWindowId(observation)) record["screenWindowId"] = *number;
  return record;
}

Record serializedClient(std::string_view provider, std::string_view key, std::int32_t pid,
                        const std::optional<std::string>& bundleID, bool mediaActive, bool lobby) {
  Record record = versioned();
  record["type"] = std::string("client");
  record["provider"] = std::string(provider);
  record["key"] = std::string(key);
  record["state"] = std::string("active");
  record["mediaActive"] = mediaActive;
  record["lobby"] = lobby;
  record["pid"] = static_cast<std::int64_t>(pid);
  if (bundleID && !bundleID->empty() && shorterThan(*bundleID, clientBundleLimit)) {
    record["applicationBundleId"] = *bundleID;
  }
  return record;
}

Record serializedClientScan(std::string_view stage, const std::optional<std::string>& provider,
                            const std::optional<Evidence>& evidence) {
  Record record = versioned();
  record["type"] = std::string("client-scan");
  record["stage"] = std::string(stage);
  if (!provider) return record;
  record["provider"] = *provider;
  if (!evidence) return record;
  record["nodes"] = static_cast<std::int64_t>(evidence->nodes);
  record["failedNodes"] = static_cast<std::int64_t>(evidence->failedNodes);
  record["failedAttributes"] = listOrNull(evidence->failedAttributes);
  record["failedControlHints"] = listOrNull(evidence->failedControlHints);
  record["deadline"] = evidence->deadline;
  record["truncated"] = evidence->truncated;
  addControlTests(*evidence, *provider, record);
  return record;
}

Record serializedHealth(bool trusted) {
  Record record = versioned();
  record["type"] = std::string("health");
  record["trusted"] = trusted;
  return record;
}

}  // namespace callmonitor
