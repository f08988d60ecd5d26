// The connection to a PulseAudio server: keeps a snapshot of its streams up to date.
#pragma once

#include <memory>

#include "platform/linux/audio_streams.h"
#include "platform/linux/pulse_streams.h"

namespace callmonitor::platform {

struct PulseAudio;
struct EndPulseAudio {
  void operator()(PulseAudio* audio) const;
};
using PulseAudioHandle = std::unique_ptr<PulseAudio, EndPulseAudio>;

// A connection that is not made yet; null when the library cannot be used.
[[nodiscard]] PulseAudioHandle makePulseAudio();

// Connects unless connected; to be called again from time to time. Starts no server and does not
// wait for an answer.
void connectPulse(PulseAudio& audio);

// Ends the connection, if there is one, and begins anew to look for the server.
void disconnectPulse(PulseAudio& audio);

// Takes in what has arrived, without waiting, and asks the server for what it has now, which the
// next call looks at.
void hearPulse(PulseAudio& audio);

// How much is known as of the last `hearPulse`. Before the first and after each connection it is
// `learning`, and `absent` only once there has been no socket for five seconds of looking for it: a
// dead server's streams are not known to have ended, whatever else is heard.
[[nodiscard]] Hearing pulseHearing(const PulseAudio& audio);

// What the server last said in full; worth something only while the hearing is `known`.
[[nodiscard]] const PulseSnapshot& pulseSnapshot(const PulseAudio& audio);

}  // namespace callmonitor::platform
