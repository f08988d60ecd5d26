// What both sound servers are reduced to: streams of processes, and from those the answer to who
// captures and who plays. Nothing here speaks to a server.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/known_applications.h"
#include "platform/linux/stream_claim.h"
#include "platform/platform.h"

namespace callmonitor::platform {

// One capture or playback stream of a program.
struct AudioStream {
  bool input = false;               // captures; otherwise it plays
  bool running = false;             // sound passes through it now
  std::optional<std::int32_t> pid;  // absent when the server does not know whose it is
  // Where `pid` is the client's own word; absent where the kernel vouches for it.
  std::optional<StreamClaim> claim{};
};

// What is asked of the desktop about processes.
struct ProcessQuestions {
  ProcessLooker look;
  // The bundle identifier of a process that is not in the list of applications; empty when unknown.
  std::function<std::string(std::int32_t)> bundle;
  // That of a Flatpak application.
  std::function<std::string(const std::string&)> flatpakBundle;
  std::function<ProcessNames(std::int32_t)> names;
  Machine machine;
};

// The process that a stream of `pid` counts for: the nearest of `pid` and its ancestors that is an
// application, and `pid` itself when none is. Absent when a process on the way could not be looked
// at, or `pid` has ended while its stream goes on, so that nothing can be said.
[[nodiscard]] std::optional<std::int32_t> owningProcess(
    std::int32_t pid, const std::vector<Application>& applications, const ProcessLooker& look);

// One entry for each process that owns a stream or is remembered to have owned one and still lives;
// `owners` is that memory and is brought up to date. The streams that name no process and those of
// other machines share one entry without a bundle. A stream out of a Flatpak sandbox, whose process
// ids mean nothing outside, belongs to the applications of that sandbox together. Absent when the
// owner of a stream could not be told.
[[nodiscard]] std::optional<std::vector<AudioProcess>> foldStreams(
    const std::vector<AudioStream>& streams, const std::vector<Application>& applications,
    KnownApplications& owners, const ProcessQuestions& questions);

// How much of one sound server is known.
enum class Hearing {
  absent,    // there is no such server
  learning,  // it is there or may be, and what it has said so far is not complete
  silent,    // it is there and has not answered in time
  known      // all that it has is known
};

// What tells which server's word is to be taken.
struct ServersHeard {
  Hearing pipewire = Hearing::absent;
  bool pipewireServesPulse = false;  // PulseAudio's clients reach it, too
  bool pipewireHasDevices = false;   // some sink or source is there
  Hearing pulse = Hearing::absent;
  bool pulseIsPipewire = false;  // PulseAudio's socket leads to PipeWire
};

// Whose streams, taken together, are all that there are. Neither means that it is not known.
struct ServersBelieved {
  bool pipewire = false;
  bool pulse = false;
  friend bool operator==(const ServersBelieved&, const ServersBelieved&) = default;
};

// PipeWire runs for screen sharing beside a PulseAudio that has the sound, so that it answers is no
// proof that it hears.
[[nodiscard]] ServersBelieved serversBelieved(const ServersHeard& heard);

// Whether PulseAudio's socket has to be asked at all.
[[nodiscard]] bool pulseMatters(const ServersHeard& heard);

}  // namespace callmonitor::platform
