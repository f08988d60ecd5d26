// The pieces of state that a cycle works on. Their owner keeps them alive for as long as cycles
// run.
#pragma once

#include "driver/cadence.h"
#include "driver/scan_memory.h"
#include "tracking/client_activity.h"
#include "tracking/tracker.h"
#include "tracking/writer.h"

namespace callmonitor {

struct CycleState {
  ScanCadence& cadence;
  ScanMemory& scan;
  Tracker& tracker;
  WriterGates& gates;
  ClientActivityMemory& clients;
};

}  // namespace callmonitor
