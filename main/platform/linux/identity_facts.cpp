// Collects the facts from /proc.
#include "platform/linux/identity_facts.h"

#include <algorithm>
#include <cstddef>

#include "platform/linux/process_files.h"
#include "platform/linux/utf8.h"

namespace callmonitor::platform {
namespace {

// The value of `KEY=` in an environment; empty when unset.
std::string_view valueIn(const std::vector<std::string>& environment, std::string_view key) {
  for (const std::string_view entry : environment) {
    if (entry.size() > key.size() && entry.starts_with(key) && entry[key.size()] == '=') {
      return entry.substr(key.size() + 1);
    }
  }
  return {};
}

}  // namespace

std::string flatpakIdentifier(std::string_view info) {
  bool inGroup = false;
  while (!info.empty()) {
    const std::size_t end = std::min(info.find('\n'), info.size());
    const std::string_view line = info.substr(0, end);
    info.remove_prefix(std::min(end + 1, info.size()));
    if (line.starts_with('[')) inGroup = line == "[Application]";
    if (inGroup && line.starts_with("name=")) return std::string(line.substr(5));
  }
  return {};
}

std::string snapName(std::string_view executable) {
  for (const std::string_view root : {"/snap/", "/var/lib/snapd/snap/"}) {
    if (!executable.starts_with(root)) continue;
    executable.remove_prefix(root.size());
    const std::size_t end = executable.find('/');
    if (end == std::string_view::npos) return {};
    return std::string(executable.substr(0, end));
  }
  return {};
}

std::string launchedDesktopFile(const std::vector<std::string>& environment, std::int32_t pid) {
  if (valueIn(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID") != std::to_string(pid)) return {};
  return std::string(valueIn(environment, "GIO_LAUNCHED_DESKTOP_FILE"));
}

IdentityFacts identityFacts(std::int32_t pid) {
  const std::string process = "/proc/" + std::to_string(pid);
  IdentityFacts facts;
  facts.executable = repairedUtf8(readLink(process + "/exe").value_or(""));
  const auto arguments = splitAtNul(readFile(process + "/cmdline").value_or(""));
  if (!arguments.empty()) facts.command = repairedUtf8(arguments.front());
  facts.flatpak =
      repairedUtf8(flatpakIdentifier(readFile(process + "/root/.flatpak-info").value_or("")));
  facts.snap = snapName(facts.executable);
  facts.desktopFile = repairedUtf8(
      launchedDesktopFile(splitAtNul(readFile(process + "/environ").value_or("")), pid));
  return facts;
}

}  // namespace callmonitor::platform
