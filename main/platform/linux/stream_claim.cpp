#include "platform/linux/stream_claim.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "platform/linux/process_files.h"

namespace callmonitor::platform {
namespace {

// The length at which the kernel cuts a process's short name off.
constexpr std::size_t shortNameLength = 15;
// What the kernel puts behind the path of a running file that was replaced, as by an update.
constexpr std::string_view replaced = " (deleted)";

std::string firstOf(const SoundProperties& stream, const SoundProperties& client,
                    std::string_view name) {
  const std::string_view own = propertyOf(stream, name);
  return std::string(own.empty() ? propertyOf(client, name) : own);
}

std::string firstLineOf(const char* path) {
  const std::string text = readFile(path).value_or("");
  return text.substr(0, text.find('\n'));
}

std::string fileName(std::string_view path) {
  if (path.ends_with(replaced)) path.remove_suffix(replaced.size());
  return std::string(path.substr(path.rfind('/') + 1));
}

bool differ(const std::string& left, const std::string& right) {
  return !left.empty() && !right.empty() && left != right;
}

// Whether `longer` is `shorter` or it with a version behind it.
bool isVersionOf(std::string_view longer, std::string_view shorter) {
  return longer.starts_with(shorter) &&
         longer.find_first_not_of("0123456789.", shorter.size()) == std::string_view::npos;
}

}  // namespace

StreamClaim claimIn(const SoundProperties& stream, const SoundProperties& client) {
  StreamClaim claim;
  claim.host = firstOf(stream, client, "application.process.host");
  // As PulseAudio's library writes it, and as PipeWire's service passes it on.
  claim.machine = firstOf(stream, client, "application.process.machine_id");
  if (claim.machine.empty()) {
    claim.machine = firstOf(stream, client, "application.process.machine-id");
  }
  claim.binary = firstOf(stream, client, "application.process.binary");
  // A stream's own is its client's word only.
  claim.flatpak = propertyOf(client, "pipewire.access.portal.app_id");
  return claim;
}

Machine thisMachine() {
  Machine machine;
  std::array<char, 256> host{};
  if (gethostname(host.data(), host.size() - 1) == 0) machine.host = host.data();
  machine.id = firstLineOf("/etc/machine-id");
  if (machine.id.empty()) machine.id = firstLineOf("/var/lib/dbus/machine-id");
  return machine;
}

ProcessNames processNames(std::int32_t pid) {
  const std::string process = "/proc/" + std::to_string(pid);
  ProcessNames names{fileName(readLink(process + "/exe").value_or("")),
                     firstLineOf((process + "/comm").c_str())};
  const auto arguments = splitAtNul(readFile(process + "/cmdline").value_or(""));
  if (!arguments.empty()) names.push_back(fileName(arguments.front()));
  std::erase(names, "");
  return names;
}

bool mayBe(std::string_view binary, const ProcessNames& names) {
  return binary.empty() || std::any_of(names.begin(), names.end(), [&](std::string_view name) {
           return isVersionOf(name, binary) || isVersionOf(binary, name) ||
                  (name.size() == shortNameLength && binary.starts_with(name));
         });
}

Belief beliefIn(const StreamClaim& claim, const Machine& here, const ProcessNames& names) {
  if (differ(claim.machine, here.id)) return Belief::nobody;
  const bool otherHost = differ(claim.host, here.host);
  const bool sameMachine = !claim.machine.empty() && claim.machine == here.id;
  if (otherHost && !sameMachine) return Belief::nobody;
  if (!names.empty() && mayBe(claim.binary, names)) return Belief::process;
  return otherHost ? Belief::nobody : Belief::unknown;
}

}  // namespace callmonitor::platform
