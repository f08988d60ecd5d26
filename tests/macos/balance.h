// Who holds which references of the system frameworks between two cycles.
#pragma once

#include <cstddef>

#include "process_state.h"

namespace callmonitor::macos {

// Fails the running test unless the references that the platform holds are exactly those behind the
// handles that the state remembers, and `openPools` pools are open: none but where the run loop
// runs, which has one.
void expectBalance(const ProcessState& state, std::size_t openPools);

}  // namespace callmonitor::macos
