// The names of properties are PipeWire's own, as its clients and its PulseAudio service set them.
#include "platform/linux/pipewire_graph.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

namespace callmonitor::platform {
namespace {

constexpr std::string_view pulseService = "pipewire-pulse";
constexpr std::string_view pulseServiceConfiguration = "pipewire-pulse.conf";

// Absent when the node is no audio stream.
std::optional<bool> capturesOf(const SoundProperties& node) {
  const std::string_view mediaClass = propertyOf(node, "media.class");
  if (mediaClass == "Stream/Input/Audio") return true;
  if (mediaClass == "Stream/Output/Audio") return false;
  return std::nullopt;
}

const GraphObject* clientOf(const PipeWireGraph& graph, const SoundProperties& node) {
  const std::string_view text = propertyOf(node, "client.id");
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return nullptr;
  const auto found = graph.clients.find(number);
  return found != graph.clients.end() ? &found->second : nullptr;
}

// A client that came through the PulseAudio service has that service's process id as the one that
// the kernel vouches for, and says its own by itself.
AudioStream streamOf(bool captures, const GraphObject& object, const SoundProperties& client) {
  const SoundProperties& node = object.properties;
  if (propertyOf(node, "client.api") != pulseService &&
      propertyOf(client, "client.api") != pulseService) {
    return {captures, object.running, processIn(client, "pipewire.sec.pid"), {}};
  }
  auto pid = processIn(node, "application.process.id");
  if (!pid) pid = processIn(client, "application.process.id");
  return {captures, object.running, pid, claimIn(node, client)};
}

}  // namespace

void mergeProperties(SoundProperties& known, const SoundProperties& update) {
  for (const auto& [name, value] : update) known.insert_or_assign(name, value);
}

bool isPersonalStream(const SoundProperties& node) {
  // The PulseAudio service marks the recording of a monitor with the second, and a level meter with
  // the first and the third.
  if (isSet(node, "stream.monitor") || isSet(node, "stream.capture.sink") ||
      isSet(node, "resample.peaks")) {
    return false;
  }
  // Loopbacks, filters, echo cancellers and remapped devices are pairs of nodes with a group.
  if (isSet(node, "node.virtual") || !propertyOf(node, "node.link-group").empty()) return false;
  const std::string_view category = propertyOf(node, "media.category");
  return category != "Monitor" && category != "Filter" && category != "Manager";
}

std::optional<std::vector<AudioStream>> streamsOf(const PipeWireGraph& graph) {
  std::vector<AudioStream> streams;
  for (const auto& [number, node] : graph.nodes) {
    const auto captures = capturesOf(node.properties);
    // A node that was announced without a class may yet turn out to be a stream.
    if (!node.told && (captures || propertyOf(node.properties, "media.class").empty())) {
      return std::nullopt;
    }
    if (!captures || !isPersonalStream(node.properties)) continue;
    const GraphObject* client = clientOf(graph, node.properties);
    if (client == nullptr) {
      // A node of the server itself, or one whose client has just gone and which goes next.
      streams.push_back({*captures, node.running, {}, {}});
      continue;
    }
    if (!client->told) return std::nullopt;
    streams.push_back(streamOf(*captures, node, client->properties));
  }
  return streams;
}

bool servesPulse(const PipeWireGraph& graph) {
  return std::any_of(graph.clients.begin(), graph.clients.end(), [](const auto& each) {
    const SoundProperties& client = each.second.properties;
    return propertyOf(client, "config.name").ends_with(pulseServiceConfiguration) ||
           propertyOf(client, "client.api") == pulseService;
  });
}

bool hasDevices(const PipeWireGraph& graph) {
  return std::any_of(graph.nodes.begin(), graph.nodes.end(), [](const auto& each) {
    return propertyOf(each.second.properties, "media.class").starts_with("Audio/");
  });
}

}  // namespace callmonitor::platform
