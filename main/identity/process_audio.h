// From the sound system's processes to the audio state of one client, and from that to whether an
// unknown application behaves like a meeting client.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace callmonitor {

using platform::AudioProcess;

// The audio state of one client, all of its processes folded into one.
struct ClientAudio {
  bool input = false;   // some process is capturing
  bool output = false;  // some process is playing
  [[nodiscard]] bool active() const { return input || output; }
};

// The bundle identifier under which a client's audio is looked up: a browser's web apps share the
// browser's, every other application has its own.
[[nodiscard]] std::string audioFamily(std::string_view bundle);

// Whether no process of a client's can be told from the list, whatever the list holds: Safari's
// media plays in processes that do not carry its identifier.
[[nodiscard]] bool neverAttributed(std::string_view bundle);

// The audio state of one client: its own process and its helpers. Absent, which is not silence,
// when there is no process list, the list knows no process of the client, or the client's sound is
// never attributed to it.
[[nodiscard]] std::optional<ClientAudio> clientAudio(
    std::string_view bundle, const std::optional<std::vector<AudioProcess>>& processes);

// Whether an application that is in no table counts as a meeting client: a regular application,
// not this system's own and not the operating system's (FaceTime apart), that captures and plays
// at once. Absent audio is a no.
[[nodiscard]] bool genericClient(std::string_view bundle, bool regular,
                                 const std::optional<ClientAudio>& audio);

}  // namespace callmonitor
