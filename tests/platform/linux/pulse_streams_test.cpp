#include "platform/linux/pulse_streams.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace callmonitor::platform {
namespace {

constexpr std::uint32_t speaker = 0;
constexpr std::uint32_t suspendedSpeaker = 1;
constexpr std::uint32_t microphone = 0;
constexpr std::uint32_t monitorOfSpeaker = 1;
constexpr std::uint32_t suspendedMicrophone = 2;
constexpr std::uint32_t elsewhere = 9;

using Row = std::tuple<bool, bool, std::optional<std::int32_t>>;  // input, running, pid

PulseStream recording() {
  return {true,
          7,
          microphone,
          false,
          "speex-float-1",
          {{"application.process.id", "4711"}, {"media.name", "a call"}}};
}

template <class Change>
PulseStream recording(Change change) {
  PulseStream stream = recording();
  change(stream);
  return stream;
}

TEST(PulseStreamsOf, AreThoseOfProgramsWithTheProcessesThatTheyName) {
  struct Case {
    std::string name;
    PulseStream stream;
    std::optional<std::vector<Row>> expected;
  };
  const std::vector<Case> cases{
      {"recording is input", recording(), {{{true, true, 4711}}}},
      {"playing is output",
       recording([](PulseStream& stream) {
         stream.input = false;
         stream.device = speaker;
       }),
       {{{false, true, 4711}}}},
      {"a corked stream is there and does not run",
       recording([](PulseStream& stream) { stream.corked = true; }),
       {{{true, false, 4711}}}},
      {"nothing runs through a suspended source",
       recording([](PulseStream& stream) { stream.device = suspendedMicrophone; }),
       {{{true, false, 4711}}}},
      {"nothing runs through a suspended sink",
       recording([](PulseStream& stream) {
         stream.input = false;
         stream.device = suspendedSpeaker;
       }),
       {{{false, false, 4711}}}},
      {"nothing runs while a stream is being moved",
       recording([](PulseStream& stream) { stream.device.reset(); }),
       {{{true, false, 4711}}}},
      {"a stream that names no process is nobody's",
       recording([](PulseStream& stream) { stream.properties.clear(); }),
       {{{true, true, std::nullopt}}}},
      {"the recording of what is played is left out",
       recording([](PulseStream& stream) { stream.device = monitorOfSpeaker; }),
       {{}}},
      {"a level meter is left out",
       recording([](PulseStream& stream) { stream.resampler = "peaks"; }),
       {{}}},
      {"a module's own stream is left out",
       recording([](PulseStream& stream) { stream.client.reset(); }),
       {{}}},
      {"a stream on a device that is not known makes everything unknown",
       recording([](PulseStream& stream) { stream.device = elsewhere; }), std::nullopt},
      {"a module's own stream on such a device matters not",
       recording([](PulseStream& stream) {
         stream.client.reset();
         stream.device = elsewhere;
       }),
       {{}}},
  };
  for (const Case& each : cases) {
    PulseSnapshot snapshot;
    snapshot.sinks = {{speaker, {}}, {suspendedSpeaker, {false, true}}};
    snapshot.sources = {
        {microphone, {}}, {monitorOfSpeaker, {true, false}}, {suspendedMicrophone, {false, true}}};
    snapshot.streams = {each.stream};
    const auto streams = streamsOf(snapshot);
    std::optional<std::vector<Row>> rows;
    if (streams) {
      rows.emplace();
      for (const AudioStream& stream : *streams) {
        rows->emplace_back(stream.input, stream.running, stream.pid);
      }
    }
    EXPECT_EQ(rows, each.expected) << each.name;
  }
}

TEST(PulseServerName, TellsPipeWireFromPulseAudio) {
  EXPECT_TRUE(isPipeWireName("PulseAudio (on PipeWire 0.3.65)"));
  EXPECT_TRUE(isPipeWireName("PulseAudio (on PipeWire 1.4.2)"));
  EXPECT_FALSE(isPipeWireName("pulseaudio"));
  EXPECT_FALSE(isPipeWireName(""));
}

}  // namespace
}  // namespace callmonitor::platform
