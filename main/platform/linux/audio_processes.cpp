// The answer to who captures and who plays, from what the sound servers have said so far.
#include <string>
#include <utility>

#include "platform/linux/application_list.h"
#include "platform/linux/audio_hearing.h"
#include "platform/linux/audio_streams.h"
#include "platform/linux/bundle_identifier.h"
#include "platform/linux/desktop.h"
#include "platform/linux/identity_facts.h"
#include "platform/linux/process_files.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Seconds between two attempts to reach a server that is not there.
constexpr double attemptPeriod = 1.0;

// What could not be asked yet may be there.
ServersHeard serversHeard(const AudioHearing& hearing) {
  ServersHeard heard;
  heard.pipewire = Hearing::learning;
  heard.pulse = Hearing::learning;
  if (hearing.pipewire) {
    const PipeWireGraph& graph = pipeWireGraph(*hearing.pipewire);
    heard.pipewire = pipeWireHearing(*hearing.pipewire);
    heard.pipewireServesPulse = servesPulse(graph);
    heard.pipewireHasDevices = hasDevices(graph);
  }
  if (hearing.pulse) {
    heard.pulse = pulseHearing(*hearing.pulse);
    heard.pulseIsPipewire = isPipeWireName(pulseSnapshot(*hearing.pulse).serverName);
  }
  return heard;
}

// A PipeWire that has just come up may yet turn out not to hear PulseAudio's clients, so a
// connection to PulseAudio goes only when it is known to be needless.
void connectPulseIfItMatters(AudioHearing& hearing) {
  const ServersHeard heard = serversHeard(hearing);
  if (pulseMatters(heard)) {
    if (!hearing.pulse) hearing.pulse = makePulseAudio();
    if (hearing.pulse) connectPulse(*hearing.pulse);
  } else if (hearing.pulse && heard.pipewire == Hearing::known) {
    disconnectPulse(*hearing.pulse);
  }
}

void connectServers(AudioHearing& hearing) {
  if (!hearing.pipewire) hearing.pipewire = makePipeWireAudio();
  if (hearing.pipewire) connectPipeWire(*hearing.pipewire);
  connectPulseIfItMatters(hearing);
}

// All streams that there are, as of now; absent while that is not known.
std::optional<std::vector<AudioStream>> heardStreams(AudioHearing& hearing) {
  if (hearing.pipewire) hearPipeWire(*hearing.pipewire);
  // What was just heard may be the first word of a need for the other server.
  connectPulseIfItMatters(hearing);
  if (hearing.pulse) hearPulse(*hearing.pulse);
  const ServersBelieved believed = serversBelieved(serversHeard(hearing));
  if (!believed.pipewire && !believed.pulse) return std::nullopt;
  std::vector<AudioStream> streams;
  if (believed.pipewire) {
    auto native = streamsOf(pipeWireGraph(*hearing.pipewire));
    if (!native) return std::nullopt;
    streams = std::move(*native);
  }
  if (believed.pulse) {
    const auto others = streamsOf(pulseSnapshot(*hearing.pulse));
    if (!others) return std::nullopt;
    streams.insert(streams.end(), others->begin(), others->end());
  }
  return streams;
}

}  // namespace

void beginHearing(AudioHearing& hearing) {
  if (hearing.connecting) return;
  connectServers(hearing);
  hearing.connecting = everySeconds(attemptPeriod, [&hearing] { connectServers(hearing); });
}

std::optional<std::vector<AudioProcess>> audioProcesses() {
  Desktop& here = desktop();
  const auto streams = heardStreams(here.audio);
  if (!streams) return std::nullopt;
  ProcessQuestions questions;
  questions.look = lookAtProcess;
  questions.bundle = [](std::int32_t pid) {
    return bundleIdentifier(identityFacts(pid)).value_or("");
  };
  questions.flatpakBundle = [](const std::string& flatpak) {
    IdentityFacts facts;
    facts.flatpak = flatpak;
    return bundleIdentifier(facts).value_or("");
  };
  questions.names = processNames;
  questions.machine = thisMachine();
  // Reading the applications is dear, and needless in the usual silence.
  const bool nobody = streams->empty() && here.audio.owners.empty();
  return foldStreams(*streams, nobody ? std::vector<Application>() : runningApplications(),
                     here.audio.owners, questions);
}

}  // namespace callmonitor::platform
