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

void connectServers(AudioHearing& hearing) {
  if (hearing.pipewire) connectPipeWire(*hearing.pipewire);
}

// All streams that there are, as of now; absent while that is not known.
std::optional<std::vector<AudioStream>> heardStreams(AudioHearing& hearing) {
  ServersHeard heard;
  if (hearing.pipewire) {
    hearPipeWire(*hearing.pipewire);
    const PipeWireGraph& graph = pipeWireGraph(*hearing.pipewire);
    heard.pipewire = pipeWireHearing(*hearing.pipewire);
    heard.pipewireServesPulse = servesPulse(graph);
    heard.pipewireHasDevices = hasDevices(graph);
  }
  const ServersBelieved believed = serversBelieved(heard);
  if (!believed.pipewire && !believed.pulse) return std::nullopt;
  return streamsOf(pipeWireGraph(*hearing.pipewire));
}

}  // namespace

void beginHearing(AudioHearing& hearing) {
  if (hearing.connecting) return;
  hearing.pipewire = makePipeWireAudio();
  connectServers(hearing);
  hearing.connecting = everySeconds(attemptPeriod, [&hearing] { connectServers(hearing); });
}

std::optional<std::vector<AudioProcess>> audioProcesses() {
  Desktop& here = desktop();
  const auto streams = heardStreams(here.audio);
  if (!streams) return std::nullopt;
  const ProcessQuestions questions{lookAtProcess, [](std::int32_t pid) {
                                     return bundleIdentifier(identityFacts(pid)).value_or("");
                                   }};
  // Reading the applications is dear, and needless in the usual silence.
  const bool nobody = streams->empty() && here.audio.owners.empty();
  return foldStreams(*streams, nobody ? std::vector<Application>() : runningApplications(),
                     here.audio.owners, questions);
}

}  // namespace callmonitor::platform
