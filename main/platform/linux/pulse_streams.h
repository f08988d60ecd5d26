// What a PulseAudio server has said of itself at one moment, and which streams that makes.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/audio_streams.h"

namespace callmonitor::platform {

struct PulseDevice {
  bool monitor = false;    // a source that gives what a sink plays
  bool suspended = false;  // no sound passes through it
};
using PulseDevices = std::map<std::uint32_t, PulseDevice>;  // by the server's number

struct PulseStream {
  bool input = false;                   // records from a source; otherwise it plays to a sink
  std::optional<std::uint32_t> client;  // absent for the server's own streams
  std::optional<std::uint32_t> device;  // absent while the stream is being moved
  bool corked = false;                  // paused by its program
  std::string resampler;
  SoundProperties properties;
};

struct PulseSnapshot {
  std::string serverName;
  PulseDevices sinks;
  PulseDevices sources;
  std::vector<PulseStream> streams;
};

// The streams of programs: without those that record what is being played, the level meters, and
// those of the server's own modules. Absent when a stream uses a device that is not in the
// snapshot, so that what it records cannot be told.
[[nodiscard]] std::optional<std::vector<AudioStream>> streamsOf(const PulseSnapshot& snapshot);

// Whether a server of this name is PipeWire's service for PulseAudio's clients.
[[nodiscard]] bool isPipeWireName(std::string_view serverName);

}  // namespace callmonitor::platform
