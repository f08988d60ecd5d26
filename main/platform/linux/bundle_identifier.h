// The decision rules know applications by bundle identifiers. This desktop knows them by
// executable, desktop file, Flatpak or Snap; one table says which of those are which.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace callmonitor::platform {

// What is known of a running process's identity. Empty means unknown or none.
struct IdentityFacts {
  std::string executable;   // absolute path of the running file
  std::string command;      // first argument, for a process whose file may not be looked at
  std::string flatpak;      // Flatpak application id
  std::string snap;         // Snap name
  std::string desktopFile;  // path or name of the desktop file that launched this very process
};

// The bundle identifier, or absent when nothing is known of the process. The package's own name
// comes before the executable and that before the desktop file: a browser window that a desktop
// file opens as an application of its own (`--app=`) belongs to the browser's process and is the
// browser's. What the table does not list keeps the name of its package, desktop file or
// executable.
[[nodiscard]] std::optional<std::string> bundleIdentifier(const IdentityFacts& facts);

// Reads what the kernel and the desktop's launcher tell about a process. Facts that may not be
// read stay empty.
[[nodiscard]] IdentityFacts identityFacts(std::int32_t pid);

}  // namespace callmonitor::platform
