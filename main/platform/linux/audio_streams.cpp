// Attribution and folding; which server is believed.
#include "platform/linux/audio_streams.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace callmonitor::platform {
namespace {

// Ancestors are looked at no further than this: process trees are not that deep, and processes that
// come and go while they are looked at must not lead in a circle.
constexpr int mostAncestors = 64;

const Application* applicationOf(const std::vector<Application>& applications, std::int32_t pid) {
  const auto found = std::find_if(applications.begin(), applications.end(),
                                  [&](const Application& each) { return each.pid == pid; });
  return found != applications.end() ? &*found : nullptr;
}

void addStream(AudioProcess& process, const AudioStream& stream) {
  (stream.input ? process.input : process.output) |= stream.running;
}

std::set<std::int32_t> processesOf(const std::string& bundle,
                                   const std::vector<Application>& applications) {
  std::set<std::int32_t> pids;
  for (const Application& each : applications) {
    if (each.bundleIdentifier == bundle) pids.insert(each.pid);
  }
  return pids;
}

Belief whose(const AudioStream& stream, const ProcessQuestions& questions) {
  if (!stream.pid) return Belief::nobody;
  if (!stream.claim) return Belief::process;
  return beliefIn(*stream.claim, questions.machine, questions.names(*stream.pid));
}

}  // namespace

std::optional<std::int32_t> owningProcess(std::int32_t pid,
                                          const std::vector<Application>& applications,
                                          const ProcessLooker& look) {
  std::int32_t ancestor = pid;
  for (int step = 0; step < mostAncestors && ancestor > 1; ++step) {
    const ProcessLook now = look(ancestor);
    if (now.gone) return ancestor == pid ? std::nullopt : std::optional(pid);
    if (applicationOf(applications, ancestor) != nullptr) return ancestor;
    if (!now.stat) return std::nullopt;
    ancestor = now.stat->parent;
  }
  return pid;
}

std::optional<std::vector<AudioProcess>> foldStreams(const std::vector<AudioStream>& streams,
                                                     const std::vector<Application>& applications,
                                                     KnownApplications& owners,
                                                     const ProcessQuestions& questions) {
  std::map<std::int32_t, AudioProcess> heard;     // by owner
  std::map<std::string, AudioProcess> ownerless;  // by bundle
  std::set<std::int32_t> owning;
  for (const AudioStream& stream : streams) {
    if (stream.claim && !stream.claim->flatpak.empty()) {
      const std::string bundle = questions.flatpakBundle(stream.claim->flatpak);
      const auto family = processesOf(bundle, applications);
      owning.insert(family.begin(), family.end());
      addStream(family.empty() ? ownerless[bundle] : heard[*family.begin()], stream);
      continue;
    }
    switch (whose(stream, questions)) {
      case Belief::nobody:
        addStream(ownerless[""], stream);
        continue;
      case Belief::unknown:
        return std::nullopt;
      case Belief::process:
        break;
    }
    const auto owner = owningProcess(*stream.pid, applications, questions.look);
    if (!owner) return std::nullopt;
    owning.insert(*owner);
    addStream(heard[*owner], stream);
  }
  updateKnown(owners, owning, questions.look);

  std::vector<AudioProcess> processes;
  for (auto& [pid, owner] : owners) {
    if (const Application* application = applicationOf(applications, pid)) {
      owner.bundle = application->bundleIdentifier.value_or("");
    } else if (!owner.bundle) {
      owner.bundle = questions.bundle(pid);
    }
    AudioProcess process = heard[pid];
    heard.erase(pid);
    process.bundle = *owner.bundle;
    processes.push_back(std::move(process));
  }
  // What is left has streams, and its process ended just now.
  if (!heard.empty()) return std::nullopt;
  for (auto& [bundle, process] : ownerless) {
    process.bundle = bundle;
    processes.push_back(std::move(process));
  }
  return processes;
}

ServersBelieved serversBelieved(const ServersHeard& heard) {
  constexpr ServersBelieved neither{};
  if (!pulseMatters(heard)) {
    return heard.pipewire == Hearing::known ? ServersBelieved{true, false} : neither;
  }
  switch (heard.pulse) {
    case Hearing::known:
      if (heard.pipewire != Hearing::known) {
        // Without its own word PipeWire is not known, whoever speaks for it.
        return heard.pulseIsPipewire ? neither : ServersBelieved{false, true};
      }
      return {true, !heard.pulseIsPipewire};
    case Hearing::learning:
    case Hearing::silent:
      // It may have streams that PipeWire knows nothing of.
      return neither;
    case Hearing::absent:
      break;
  }
  // Without a PulseAudio, a PipeWire that has devices has the sound.
  const bool sounds = heard.pipewire == Hearing::known && heard.pipewireHasDevices;
  return {sounds, false};
}

bool pulseMatters(const ServersHeard& heard) {
  if (heard.pipewire == Hearing::absent) return true;
  return heard.pipewire == Hearing::known && !heard.pipewireServesPulse;
}

}  // namespace callmonitor::platform
