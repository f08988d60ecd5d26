// The connection to PipeWire: keeps a record of its clients and nodes up to date.
#pragma once

#include <memory>

#include "platform/linux/audio_streams.h"
#include "platform/linux/pipewire_graph.h"

namespace callmonitor::platform {

struct PipeWireAudio;
struct EndPipeWireAudio {
  void operator()(PipeWireAudio* audio) const;
};
using PipeWireAudioHandle = std::unique_ptr<PipeWireAudio, EndPipeWireAudio>;

// Makes the library ready and hands its events to the run loop; no thread of the library runs.
// Connects to nothing yet. Null when the library cannot be used.
[[nodiscard]] PipeWireAudioHandle makePipeWireAudio();

// Connects unless connected; to be called again from time to time. Does not wait for an answer.
void connectPipeWire(PipeWireAudio& audio);

// Takes in what has arrived, without waiting, and asks the server whether it is still there, which
// the next call looks at.
void hearPipeWire(PipeWireAudio& audio);

// How much is known as of the last `hearPipeWire`.
[[nodiscard]] Hearing pipeWireHearing(const PipeWireAudio& audio);

// What the server has said so far; worth something only while the hearing is `known`.
[[nodiscard]] const PipeWireGraph& pipeWireGraph(const PipeWireAudio& audio);

}  // namespace callmonitor::platform
