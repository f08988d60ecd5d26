#include "platform/linux/pipewire_graph.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace callmonitor::platform {
namespace {

constexpr bool told = true;
constexpr bool untold = false;
constexpr bool running = true;
constexpr bool idle = false;

using Row = std::tuple<bool, bool, std::optional<std::int32_t>>;  // input, running, pid

std::optional<std::vector<Row>> rowsOf(const PipeWireGraph& graph) {
  const auto streams = streamsOf(graph);
  if (!streams) return std::nullopt;
  std::vector<Row> rows;
  for (const AudioStream& each : *streams) rows.emplace_back(each.input, each.running, each.pid);
  return rows;
}

GraphObject nativeClient() {
  return {{{"application.process.id", "999"}, {"pipewire.sec.pid", "4711"}}, told};
}

// The kernel vouches for the service's process, 50; the program itself is 4712.
GraphObject pulseClient() {
  return {{{"application.process.id", "4712"},
           {"client.api", "pipewire-pulse"},
           {"config.name", "pipewire-pulse.conf"},
           {"pipewire.sec.pid", "50"}},
          told};
}

GraphObject nativeStream(const std::string& mediaClass, bool isRunning) {
  return {{{"client.id", "40"}, {"media.class", mediaClass}, {"media.category", "Capture"}},
          told,
          isRunning};
}

GraphObject pulseStream(const std::string& mediaClass, bool isRunning) {
  return {{{"application.process.id", "4712"},
           {"client.api", "pipewire-pulse"},
           {"client.id", "41"},
           {"media.class", mediaClass}},
          told,
          isRunning};
}

GraphObject with(GraphObject object, const SoundProperties& properties) {
  mergeProperties(object.properties, properties);
  return object;
}

GraphObject without(GraphObject object, const std::string& name) {
  object.properties.erase(name);
  return object;
}

constexpr const char* capture = "Stream/Input/Audio";
constexpr const char* playback = "Stream/Output/Audio";

struct Case {
  std::string name;
  GraphObject node;
  std::optional<std::vector<Row>> expected;
};

void expectStreams(const std::vector<Case>& cases) {
  for (const Case& each : cases) {
    const PipeWireGraph graph{{{40, nativeClient()}, {41, pulseClient()}}, {{60, each.node}}};
    EXPECT_EQ(rowsOf(graph), each.expected) << each.name;
  }
}

TEST(StreamsOf, AreThoseOfProgramsWithTheProcessesBehindThem) {
  expectStreams({
      {"a native stream has the process that the kernel vouches for",
       nativeStream(capture, running),
       {{{true, running, 4711}}}},
      {"a stream through the PulseAudio service has the process that it names",
       pulseStream(capture, running),
       {{{true, running, 4712}}}},
      {"playback is output", pulseStream(playback, running), {{{false, running, 4712}}}},
      {"a stream that does not run is there", pulseStream(capture, idle), {{{true, idle, 4712}}}},
      {"a native stream that names a process by itself is not believed",
       with(nativeStream(playback, running), {{"application.process.id", "1"}}),
       {{{false, running, 4711}}}},
      {"where the stream does not name the process, the client through the service does",
       without(pulseStream(capture, running), "application.process.id"),
       {{{true, running, 4712}}}},
      {"a stream through the service by its client's word alone",
       without(without(pulseStream(capture, running), "application.process.id"), "client.api"),
       {{{true, running, 4712}}}},
      {"a stream without a client has no process",
       without(nativeStream(playback, running), "client.id"),
       {{{false, running, std::nullopt}}}},
      {"a stream whose client has gone has no process",
       with(nativeStream(playback, running), {{"client.id", "44"}}),
       {{{false, running, std::nullopt}}}},
      {"a microphone is no stream", nativeStream("Audio/Source/Virtual", running), {{}}},
      {"a speaker is no stream", nativeStream("Audio/Sink", running), {{}}},
      {"a camera is no stream of sound", nativeStream("Stream/Input/Video", running), {{}}},
      {"a node without a class is no stream",
       without(nativeStream("", running), "media.class"),
       {{}}},
  });
}

TEST(StreamsOf, LeavesOutWhatIsNobodysMicrophoneOrVoice) {
  expectStreams({
      {"the recording of a speaker's monitor",
       with(pulseStream(capture, running), {{"stream.capture.sink", "true"}}),
       {{}}},
      {"a level meter of a mixer",
       with(pulseStream(capture, running),
            {{"stream.monitor", "true"}, {"resample.peaks", "true"}}),
       {{}}},
      {"a level meter by its resampler alone",
       with(pulseStream(capture, running), {{"resample.peaks", "true"}}),
       {{}}},
      {"a monitor by its category",
       with(nativeStream(capture, running), {{"media.category", "Monitor"}}),
       {{}}},
      {"the capture side of a loopback",
       with(nativeStream(capture, running),
            {{"node.link-group", "loopback-10095-18"}, {"node.virtual", "true"}}),
       {{}}},
      {"the playback side of a filter",
       with(nativeStream(playback, running), {{"node.link-group", "filter-chain-7-12"}}),
       {{}}},
      {"the inside of a virtual device",
       with(nativeStream(capture, running), {{"node.virtual", "true"}}),
       {{}}},
      {"marks that are set to no leave a stream in",
       with(nativeStream(capture, running),
            {{"stream.monitor", "false"}, {"stream.capture.sink", "0"}, {"node.virtual", "false"}}),
       {{{true, running, 4711}}}},
  });
}

TEST(StreamsOf, AreUnknownWhileAWordIsMissing) {
  const auto silent = [](GraphObject object) {
    object.told = untold;
    return object;
  };
  struct UnknownCase {
    std::string name;
    PipeWireGraph graph;
    std::optional<std::vector<Row>> expected;
  };
  const std::vector<UnknownCase> cases{
      {"nothing is there", {}, {{}}},
      {"a stream that was only announced",
       {{{40, nativeClient()}}, {{60, silent(nativeStream(capture, idle))}}},
       std::nullopt},
      {"a node that was announced without its class",
       {{{40, nativeClient()}}, {{60, {{{"client.id", "40"}}, untold}}}},
       std::nullopt},
      {"a device that was only announced matters not",
       {{}, {{60, {{{"media.class", "Audio/Sink"}}, untold}}}},
       {{}}},
      {"a stream whose client was only announced",
       {{{40, silent(nativeClient())}}, {{60, nativeStream(capture, running)}}},
       std::nullopt},
      {"a client without streams that was only announced matters not",
       {{{40, silent(nativeClient())}}, {}},
       {{}}},
      {"one that is missing hides the others, too",
       {{{40, nativeClient()}},
        {{60, nativeStream(capture, running)}, {61, silent(nativeStream(playback, idle))}}},
       std::nullopt},
  };
  for (const UnknownCase& each : cases) EXPECT_EQ(rowsOf(each.graph), each.expected) << each.name;
}

TEST(MergeProperties, TakesOverWhatAnUpdateSaysAndLeavesTheRest) {
  SoundProperties known{{"client.id", "40"}, {"media.name", "first"}};
  mergeProperties(known, {{"media.name", "second"}, {"node.name", "n"}});
  EXPECT_EQ(known,
            (SoundProperties{{"client.id", "40"}, {"media.name", "second"}, {"node.name", "n"}}));
  mergeProperties(known, {});
  EXPECT_EQ(known.size(), 3U);
}

TEST(PipeWireGraph, TellsWhetherItHasThePulseServiceAndDevices) {
  struct ServerCase {
    std::string name;
    PipeWireGraph graph;
    bool serves;
    bool devices;
  };
  const auto client = [](SoundProperties properties) {
    return PipeWireGraph{{{31, {std::move(properties), told}}}, {}};
  };
  const auto node = [](const std::string& mediaClass) {
    return PipeWireGraph{{}, {{31, {{{"media.class", mediaClass}}, untold}}}};
  };
  const std::vector<ServerCase> cases{
      {"an empty server has neither", {}, false, false},
      {"the service itself", client({{"config.name", "pipewire-pulse.conf"}}), true, false},
      {"the service with its file's path",
       client({{"config.name", "/usr/share/pipewire/pipewire-pulse.conf"}}), true, false},
      {"a client that came through it", client({{"client.api", "pipewire-pulse"}}), true, false},
      {"another client", client({{"config.name", "client.conf"}, {"client.api", "alsa"}}), false,
       false},
      {"a speaker", node("Audio/Sink"), false, true},
      {"a virtual microphone", node("Audio/Source/Virtual"), false, true},
      {"a camera is no device of sound", node("Video/Source"), false, false},
      {"a stream is no device", node(capture), false, false},
  };
  for (const ServerCase& each : cases) {
    EXPECT_EQ(servesPulse(each.graph), each.serves) << each.name;
    EXPECT_EQ(hasDevices(each.graph), each.devices) << each.name;
  }
}

}  // namespace
}  // namespace callmonitor::platform
