// Addresses that lie on both sides of every address rule: the providers' own and look-alikes of
// them, with user parts, ports, escapes, launch payloads and fragments.
#pragma once

#include <string>

#include "oracle/draw.h"

namespace callmonitor::oracle {

// Any address; most are near one that names a meeting. Not all of them are well-formed.
[[nodiscard]] std::string anyAddress(Draw& draw);

}  // namespace callmonitor::oracle
