#include "platform/linux/pulse_streams.h"

namespace callmonitor::platform {
namespace {

// How the server names the resampler of a stream that asks for peaks only, as level meters do.
constexpr std::string_view peaksResampler = "peaks";

}  // namespace

std::optional<std::vector<AudioStream>> streamsOf(const PulseSnapshot& snapshot) {
  std::vector<AudioStream> streams;
  for (const PulseStream& stream : snapshot.streams) {
    if (!stream.client || stream.resampler == peaksResampler) continue;
    const auto pid = processIn(stream.properties, "application.process.id");
    const StreamClaim claim = claimIn(stream.properties, {});
    if (!stream.device) {
      streams.push_back({stream.input, false, pid, claim});
      continue;
    }
    const PulseDevices& devices = stream.input ? snapshot.sources : snapshot.sinks;
    const auto device = devices.find(*stream.device);
    if (device == devices.end()) return std::nullopt;
    if (device->second.monitor) continue;
    streams.push_back({stream.input, !stream.corked && !device->second.suspended, pid, claim});
  }
  return streams;
}

bool isPipeWireName(std::string_view serverName) {
  // "PulseAudio (on PipeWire 0.3.65)"
  return serverName.find("on PipeWire") != std::string_view::npos;
}

}  // namespace callmonitor::platform
