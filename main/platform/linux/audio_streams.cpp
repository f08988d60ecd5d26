// Attribution and folding; which server is believed.
#include "platform/linux/audio_streams.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <system_error>

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

}  // namespace

std::string_view propertyOf(const SoundProperties& properties, std::string_view name) {
  const auto found = properties.find(name);
  return found != properties.end() ? std::string_view(found->second) : std::string_view();
}

bool isSet(const SoundProperties& properties, std::string_view name) {
  const std::string_view value = propertyOf(properties, name);
  return value == "true" || value == "1";
}

std::optional<std::int32_t> processIn(const SoundProperties& properties, std::string_view name) {
  const std::string_view text = propertyOf(properties, name);
  std::int32_t pid = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pid);
  if (error != std::errc() || end != text.data() + text.size() || pid <= 0) return std::nullopt;
  return pid;
}

std::optional<std::int32_t> owningProcess(std::int32_t pid,
                                          const std::vector<Application>& applications,
                                          const ProcessLooker& look) {
  std::int32_t ancestor = pid;
  for (int step = 0; step < mostAncestors && ancestor > 1; ++step) {
    if (applicationOf(applications, ancestor) != nullptr) return ancestor;
    const ProcessLook now = look(ancestor);
    if (now.gone) break;
    if (!now.stat) return std::nullopt;
    ancestor = now.stat->parent;
  }
  return pid;
}

std::optional<std::vector<AudioProcess>> foldStreams(const std::vector<AudioStream>& streams,
                                                     const std::vector<Application>& applications,
                                                     KnownApplications& owners,
                                                     const ProcessQuestions& questions) {
  std::map<std::int32_t, AudioProcess> heard;  // by owner
  std::optional<AudioProcess> nobodys;
  std::set<std::int32_t> owning;
  for (const AudioStream& stream : streams) {
    if (!stream.pid) {
      if (!nobodys) nobodys.emplace();
      addStream(*nobodys, stream);
      continue;
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
  // What is left has streams and no living process.
  for (const auto& [pid, process] : heard) {
    if (!nobodys) nobodys.emplace();
    nobodys->input = nobodys->input || process.input;
    nobodys->output = nobodys->output || process.output;
  }
  if (nobodys) processes.push_back(*nobodys);
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
      return neither;
    case Hearing::absent:
    case Hearing::silent:
      break;
  }
  // A PipeWire that has devices has the sound, unless a PulseAudio says otherwise.
  const bool sounds = heard.pipewire == Hearing::known && heard.pipewireHasDevices;
  return {sounds, false};
}

bool pulseMatters(const ServersHeard& heard) {
  if (heard.pipewire == Hearing::absent) return true;
  return heard.pipewire == Hearing::known && !heard.pipewireServesPulse;
}

}  // namespace callmonitor::platform
