// What this platform remembers of the sound system.
#pragma once

#include "platform/linux/known_applications.h"
#include "platform/linux/pipewire_audio.h"
#include "platform/linux/pulse_audio.h"
#include "platform/linux/run_loop.h"

namespace callmonitor::platform {

struct AudioHearing {
  PipeWireAudioHandle pipewire;  // null until it was begun, and where the library cannot be used
  PulseAudioHandle pulse;        // null until PulseAudio's socket has to be asked
  LoopSourceHandle connecting;
  // Every process that has owned a stream and still lives, whichever server it was a client of.
  KnownApplications owners;
};

// Begins to listen. Waits for nothing: what is known grows while the run loop runs.
void beginHearing(AudioHearing& hearing);

}  // namespace callmonitor::platform
