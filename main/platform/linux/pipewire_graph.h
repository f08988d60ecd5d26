// What PipeWire has said of its clients and nodes, and which streams that makes.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/audio_streams.h"

namespace callmonitor::platform {

// A client or a node. The registry announces it with a part of its properties; all of them, and a
// node's state, come with its own first word.
struct GraphObject {
  SoundProperties properties;
  bool told = false;     // its own first word has come
  bool running = false;  // of a node: sound passes through it
};
using GraphObjects = std::map<std::uint32_t, GraphObject>;  // by the server's number

struct PipeWireGraph {
  GraphObjects clients;
  GraphObjects nodes;
};

// Takes over what an update says and leaves the rest: an update may carry only what has changed.
void mergeProperties(SoundProperties& known, const SoundProperties& update);

// Whether a capture or playback stream is that of a person's program: not the recording of what is
// being played, not a level meter, and not the inside of a loopback, filter or virtual device.
[[nodiscard]] bool isPersonalStream(const SoundProperties& node);

// The streams of programs. Absent while the properties of a stream or of the client that it belongs
// to have not come.
[[nodiscard]] std::optional<std::vector<AudioStream>> streamsOf(const PipeWireGraph& graph);

// Whether PulseAudio's clients are served from here.
[[nodiscard]] bool servesPulse(const PipeWireGraph& graph);

// Whether there is any sink or source.
[[nodiscard]] bool hasDevices(const PipeWireGraph& graph);

}  // namespace callmonitor::platform
