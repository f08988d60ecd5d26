// The identity of a process as other parties wrote it down: its package and its launcher.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::platform {

// What is known of a running process's identity. Empty means unknown or none.
struct IdentityFacts {
  std::string executable;   // absolute path of the running file
  std::string command;      // first argument, for a process whose file may not be looked at
  std::string flatpak;      // Flatpak application id
  std::string snap;         // Snap name
  std::string desktopFile;  // path or name of the desktop file that launched this very process
};

// The application id in the text of a sandbox's /.flatpak-info (key "name" of group "Application");
// empty when there is none.
[[nodiscard]] std::string flatpakIdentifier(std::string_view info);

// The Snap whose files an executable path lies in ("/snap/NAME/REVISION/..."); empty when none.
[[nodiscard]] std::string snapName(std::string_view executable);

// The desktop file that launched process `pid`, from its environment; empty when another process
// was launched by it and this one merely inherited the environment.
[[nodiscard]] std::string launchedDesktopFile(const std::vector<std::string>& environment,
                                              std::int32_t pid);

// Reads what the kernel and the desktop's launcher tell about a process. Facts that may not be
// read stay empty.
[[nodiscard]] IdentityFacts identityFacts(std::int32_t pid);

}  // namespace callmonitor::platform
