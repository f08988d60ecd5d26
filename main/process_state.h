// All state that outlives a cycle, composed from the pieces that the rooms own. Created once at
// start-up, belongs to the one thread. A room takes its own piece and never sees the whole.
#pragma once

#include "driver/cadence.h"
#include "driver/cycle_state.h"
#include "driver/scan_memory.h"
#include "tracking/client_activity.h"
#include "tracking/tracker.h"
#include "tracking/writer.h"

namespace callmonitor {

struct ProcessState {
  ScanCadence cadence;
  ScanMemory scan;
  Tracker tracker;
  WriterGates gates;
  ClientActivityMemory clients;

  // What the driver works on; valid for as long as this is.
  [[nodiscard]] CycleState cycleState() { return {cadence, scan, tracker, gates, clients}; }
};

}  // namespace callmonitor
