// Samples one application: its windows, what is gone of its tracked calls, and its meeting
// surfaces with their states.
#pragma once

#include <optional>
#include <vector>

#include "driver/scan_memory.h"
#include "evidence/taken_scans.h"
#include "identity/process_audio.h"
#include "platform/platform.h"
#include "tracking/call_records.h"
#include "tracking/tracker.h"

namespace callmonitor {

// What a cycle gives to the sampling of each application.
struct SamplingContext {
  // Uptime at which no further application, window, page or remembered element is opened.
  double deadline = 0;
  // Absent when the sound system could not be read.
  std::optional<std::vector<AudioProcess>> audio;
  const Tracker& tracker;
  ScanMemory& memory;
  TakenScans& scans;  // takes every scan, for whoever looks at the same root later in the tick
};

// The sample of one application. At or after the deadline its tree is not opened and the sample
// says only that the process lives: windows absent, inventory incomplete.
[[nodiscard]] AppSample sampleApplication(const platform::Application& application,
                                          const SamplingContext& context);

}  // namespace callmonitor
