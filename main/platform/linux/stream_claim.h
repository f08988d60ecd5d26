// What a client of a sound server says of itself. It says so in its own terms: its process id is
// one of another process, or of none, where the client runs on another machine or in a sandbox.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/sound_properties.h"

namespace callmonitor::platform {

// Each empty where the client does not say.
struct StreamClaim {
  std::string host;     // the name of its machine
  std::string machine;  // the machine's id
  std::string binary;   // the file name of its program
  std::string flatpak;  // its Flatpak application id, for which the server vouches
};

// The claim in the properties of a stream, and where those do not say, of the client that owns it.
[[nodiscard]] StreamClaim claimIn(const SoundProperties& stream, const SoundProperties& client);

// This machine; each empty where it is not known.
struct Machine {
  std::string host;
  std::string id;
};
[[nodiscard]] Machine thisMachine();

// The names by which a process may call its program: the file names of what runs and of its first
// argument, and the kernel's short name. Empty when there is no such process or nothing of it may
// be read.
using ProcessNames = std::vector<std::string>;
[[nodiscard]] ProcessNames processNames(std::int32_t pid);

// Whether a program that says it is `binary` can be a process of these names. One name may have a
// version behind it that the other lacks ("python3" and "python3.11"), and the kernel's ends after
// 15 bytes. True where the program does not say.
[[nodiscard]] bool mayBe(std::string_view binary, const ProcessNames& names);

// Whose a stream is that came with a process id and this claim.
enum class Belief {
  process,  // the process of that id
  nobody,   // somebody's on another machine
  unknown   // somebody's here, and not that process's
};

// `names` are those of the process with the claimed id. The ids of machines decide, because a
// machine can be given another name while its programs run; their names do where an id is missing.
[[nodiscard]] Belief beliefIn(const StreamClaim& claim, const Machine& here,
                              const ProcessNames& names);

}  // namespace callmonitor::platform
