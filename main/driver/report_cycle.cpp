#include "driver/report_cycle.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "driver/application_sampling.h"
#include "driver/cadence.h"
#include "identity/applications.h"
#include "identity/process_audio.h"
#include "platform/platform.h"
#include "tracking/records.h"
#include "tracking/writer.h"

namespace callmonitor {
namespace {

using AudioList = std::optional<std::vector<AudioProcess>>;
using platform::Application;

std::string bundleOf(const Application& application) {
  return application.bundleIdentifier.value_or("");
}

std::optional<std::int32_t> frontmostPID() {
  const std::optional<Application> front = platform::frontmostApplication();
  return front ? std::optional(front->pid) : std::nullopt;
}

// Whether an application could hold a meeting, or holds one that is tracked.
bool candidate(const Application& application, const Tracker& tracker, const AudioList& audio) {
  const std::string bundle = bundleOf(application);
  return providers.contains(bundle) || browserApplication(bundle) ||
         tracker.tracks(application.pid) ||
         genericClient(bundle, application.regular, clientAudio(bundle, audio));
}

// The candidates in the order of this cycle: by rank, and among equals in turns.
std::vector<Application> orderedCandidates(const CycleState& state, const AudioList& audio) {
  std::vector<Application> candidates;
  for (const Application& application : platform::runningApplications()) {
    if (candidate(application, state.tracker, audio)) candidates.push_back(application);
  }
  const std::optional<std::int32_t> front = frontmostPID();
  const auto rank = [&](const Application& application) {
    return scanPriority(bundleOf(application), state.tracker.tracks(application.pid),
                        front == application.pid);
  };
  candidates = rotated(candidates, state.scan.scanOffset);
  std::ranges::stable_sort(candidates, std::less(), rank);
  return candidates;
}

std::vector<AppSample> sampleApplications(const CycleState& state, const AudioList& audio,
                                          double start, TakenScans& scans) {
  const SamplingContext context{start + cycleBudget, audio, state.tracker, state.scan, scans};
  std::vector<AppSample> samples;
  for (const Application& application : orderedCandidates(state, audio)) {
    samples.push_back(sampleApplication(application, context));
  }
  return samples;
}

void forgetQuitLobbies(ClientActivityMemory& clients) {
  std::erase_if(clients.lobbyRoots,
                [](const auto& entry) { return !platform::runningApplication(entry.first); });
}

void forgetQuitApplications(ScanMemory& memory, const std::vector<AppSample>& samples) {
  std::erase_if(memory.accessibilityEnabled, [&](const auto& entry) {
    return std::ranges::none_of(samples, [&](const AppSample& sample) {
      return sample.pid == entry.first && sample.launchedAt == entry.second;
    });
  });
}

void writeObservation(const Observation& observation) {
  std::optional<std::string> bundle;
  if (const auto application = platform::runningApplication(observation.call.pid)) {
    bundle = observedApplicationBundleID(observation.call.launchedAt, application->launchedAt,
                                         application->bundleIdentifier);
  }
  emit(serializedObservation(observation, bundle));
}

void forgetUnseenElements(ScanMemory& memory, const Tracker& tracker) {
  std::set<std::string> tracked;
  for (const auto& [key, call] : tracker.calls) {
    tracked.insert(call.element);
    tracked.insert(call.window);
  }
  forgetUnseen(memory, tracked);
}

double nextInterval(const CycleState& state, const std::vector<AppSample>& samples, bool trusted) {
  const std::optional<std::int32_t> front = frontmostPID();
  const auto sample = std::ranges::find_if(
      samples, [&](const AppSample& candidate) { return front == candidate.pid; });
  const bool tracked = !state.tracker.calls.empty();
  std::optional<std::string> fingerprint;
  if (trusted) fingerprint = suspectedFront(sample == samples.end() ? nullptr : &*sample, tracked);
  return state.cadence.interval(front, fingerprint, tracked, platform::systemUptime());
}

}  // namespace

double report(const CycleState& state) {
  const bool trusted = platform::accessibilityTrusted();
  forgetQuitLobbies(state.clients);
  const AudioList audio = trusted ? platform::audioProcesses() : std::nullopt;
  const double start = platform::systemUptime();
  std::vector<AppSample> samples;
  TakenScans scans;
  if (trusted) samples = sampleApplications(state, audio, start, scans);
  state.scan.scanOffset = (state.scan.scanOffset + 1) % scanOffsetModulus;
  if (trusted) forgetQuitApplications(state.scan, samples);

  for (const Observation& observation : state.tracker.apply(samples, trusted)) {
    writeObservation(observation);
  }
  forgetUnseenElements(state.scan, state.tracker);
  reportClientActivity(state.clients, state.gates, scans, trusted);
  emit(serializedHealth(trusted));
  return nextInterval(state, samples, trusted);
}

}  // namespace callmonitor
