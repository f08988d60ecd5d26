// What the monitor takes an application for, in words.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "identity/process_audio.h"
#include "platform/platform.h"

namespace callmonitor::doctor {

// "browser", "web app", "native client zoom", "generic candidate" or "other"; the last with what is
// not known, where the sound of an absent list would decide.
[[nodiscard]] std::string kindOf(const platform::Application& application,
                                 const std::optional<std::vector<AudioProcess>>& audio);

// Whether the monitor could ever open the application's windows: what a table names, whatever it
// runs as, and what sound may make a candidate. Nothing else is opened, because what stands in its
// windows is nobody's business.
[[nodiscard]] bool mayBeOpened(const platform::Application& application);

}  // namespace callmonitor::doctor
