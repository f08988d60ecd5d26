// The decision rules know applications by bundle identifiers. This desktop knows them by
// executable, desktop file, Flatpak or Snap; one table says which of those are which.
#pragma once

#include <optional>
#include <string>

#include "platform/linux/identity_facts.h"

namespace callmonitor::platform {

// The bundle identifier, or absent when nothing is known of the process. The package's own name
// comes before the executable and that before the desktop file: a browser window that a desktop
// file opens as an application of its own (`--app=`) belongs to the browser's process and is the
// browser's. What the table does not list keeps the name of its package, desktop file or
// executable.
[[nodiscard]] std::optional<std::string> bundleIdentifier(const IdentityFacts& facts);

}  // namespace callmonitor::platform
