// Whether there is a window server behind a display's name that can be talked to within a limit.
#pragma once

namespace callmonitor::platform {

// The limit of every exchange with the window server, its connection included.
inline constexpr double x11ExchangeLimit = 0.2;  // seconds

// Whether the server of the display `name` (null: the one of the environment) answers a greeting
// within the limit. False for a display of another machine, a forwarded one included: how long it
// takes to reach cannot be limited, so its windows stay unknown.
[[nodiscard]] bool displayAnswers(const char* name);

// Waits until the descriptor can be read; false when `deadline` (uptime seconds) comes first.
[[nodiscard]] bool readableBy(double deadline, int file);

}  // namespace callmonitor::platform
