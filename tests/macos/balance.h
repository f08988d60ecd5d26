// Who holds which references of the system frameworks between two cycles.
#pragma once

#include "process_state.h"

namespace callmonitor::macos {

// Fails the running test unless the references that the platform holds are exactly those behind the
// handles that the state remembers, and no pool is open.
void expectBalance(const ProcessState& state);

}  // namespace callmonitor::macos
