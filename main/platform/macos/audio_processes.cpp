// Which processes capture and play, from the sound system's process objects.
#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/macos/core_values.h"
#include "platform/macos/owned.h"
#include "platform/macos/workspace.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

constexpr OSStatus noError = 0;
// The process objects exist from this system version on.
constexpr long firstMajorVersion = 14;
constexpr long firstMinorVersion = 2;
// A longer list is not believed; in bytes.
constexpr UInt32 listSizeLimit = 16384;
constexpr UInt32 idSize = sizeof(AudioObjectID);

// A property's code is the four characters of its name.
constexpr AudioObjectPropertySelector coded(const char (&name)[5]) {
  AudioObjectPropertySelector code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8U | static_cast<unsigned char>(name[i]);
  return code;
}

// Named here rather than by the system's headers: those of an older kit do not have them, and those
// of a newer one mark them as newer than the oldest system that the program runs on.
constexpr AudioObjectPropertySelector processList = coded("prs#");
constexpr AudioObjectPropertySelector processBundle = coded("pbid");
constexpr AudioObjectPropertySelector processCaptures = coded("piri");
constexpr AudioObjectPropertySelector processPlays = coded("piro");

AudioObjectPropertyAddress globalProperty(AudioObjectPropertySelector selector) {
  return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

// Reads at most `size` bytes into `data`; the bytes that came, or absent on a failure.
std::optional<UInt32> readInto(void* data, UInt32 size, AudioObjectID object,
                               AudioObjectPropertySelector selector) {
  const AudioObjectPropertyAddress address = globalProperty(selector);
  const OSStatus status = AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, data);
  return status == noError ? std::optional(size) : std::nullopt;
}

std::optional<std::vector<AudioObjectID>> processObjects() {
  const auto address = globalProperty(processList);
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &address, 0, nullptr, &size) !=
          noError ||
      size == 0 || size > listSizeLimit || size % idSize != 0) {
    return std::nullopt;
  }
  std::vector<AudioObjectID> ids(size / idSize);
  const std::optional<UInt32> returned =
      readInto(ids.data(), size, kAudioObjectSystemObject, processList);
  if (!returned || *returned % idSize != 0) return std::nullopt;
  // Processes may have ended since the size was asked.
  ids.resize(std::min<std::size_t>(ids.size(), *returned / idSize));
  return ids;
}

std::optional<std::string> bundleOf(AudioObjectID process) {
  Owned<CFStringRef> bundle;
  if (!readInto(bundle.slot(), sizeof(CFStringRef), process, processBundle)) {
    return std::nullopt;
  }
  return textOf(bundle.get());
}

std::optional<bool> runs(AudioObjectID process, AudioObjectPropertySelector direction) {
  UInt32 value = 0;
  const std::optional<UInt32> returned = readInto(&value, sizeof value, process, direction);
  if (!returned || *returned != sizeof value) return std::nullopt;
  return value != 0;
}

}  // namespace

std::optional<std::vector<AudioProcess>> audioProcesses() {
  if (!systemIsAtLeast(firstMajorVersion, firstMinorVersion)) return std::nullopt;
  const std::optional<std::vector<AudioObjectID>> ids = processObjects();
  if (!ids) return std::nullopt;
  std::vector<AudioProcess> processes;
  processes.reserve(ids->size());
  for (const AudioObjectID id : *ids) {
    std::optional<std::string> bundle = bundleOf(id);
    if (!bundle) return std::nullopt;
    const std::optional<bool> input = runs(id, processCaptures);
    if (!input) return std::nullopt;
    const std::optional<bool> output = runs(id, processPlays);
    if (!output) return std::nullopt;
    processes.push_back({*std::move(bundle), *input, *output});
  }
  return processes;
}

}  // namespace callmonitor::platform
