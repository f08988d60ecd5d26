// The sound system's objects: one for the system, and one for each process of the world's list.
#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstring>

#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"

namespace callmonitor::standins {
namespace {

constexpr OSStatus noError = 0;
constexpr OSStatus badObject = 0x216F626A;    // '!obj'
constexpr OSStatus badProperty = 0x77686F3F;  // 'who?'
constexpr OSStatus badSize = 0x2173697A;      // '!siz'
constexpr AudioObjectID firstProcess = 70;

// Properties, which systems and their headers know from different versions on.
constexpr AudioObjectPropertySelector processList = 0x70727323;      // 'prs#'
constexpr AudioObjectPropertySelector processBundle = 0x70626964;    // 'pbid'
constexpr AudioObjectPropertySelector processCaptures = 0x70697269;  // 'piri'
constexpr AudioObjectPropertySelector processPlays = 0x7069726F;     // 'piro'

// None of these properties has a qualifier.
void requireNoQualifier(UInt32 size, const void* qualifier) {
  if (size != 0 || qualifier != nullptr) refuse("a property was asked for with a qualifier");
}

bool global(const AudioObjectPropertyAddress& address) {
  return address.mScope == kAudioObjectPropertyScopeGlobal &&
         address.mElement == kAudioObjectPropertyElementMain;
}

// Copies what fits of a property's bytes, as the real ones do.
OSStatus give(const void* bytes, std::size_t length, UInt32* size, void* data,
              const std::optional<UInt32>& returned) {
  const std::size_t given = std::min<std::size_t>(length, *size);
  if (given > 0) std::memcpy(data, bytes, given);
  *size = returned.value_or(static_cast<UInt32>(given));
  return noError;
}

OSStatus giveList(UInt32* size, void* data) {
  const auto& processes = desktop().world.audio;
  if (!processes) return badProperty;
  std::vector<AudioObjectID> ids;
  ids.reserve(processes->size());
  for (std::size_t i = 0; i < processes->size(); ++i) {
    ids.push_back(firstProcess + static_cast<AudioObjectID>(i));
  }
  const OSStatus status = give(ids.data(), ids.size() * sizeof(AudioObjectID), size, data,
                               desktop().audioFaults.listReturned);
  return desktop().audioFaults.listStatus.value_or(status);
}

OSStatus giveBundle(const platform::AudioProcess& process, const AudioFaults& faults, UInt32* size,
                    void* data) {
  if (*size < sizeof(CFTypeRef)) return badSize;
  Object* bundle = faults.bundle ? faults.bundle() : madeText(process.bundle);
  const void* reference = handedOut(bundle);
  const OSStatus status = give(static_cast<const void*>(&reference), sizeof reference, size, data,
                               faults.bundleReturned);
  return faults.bundleStatus.value_or(status);
}

OSStatus giveProcess(std::size_t place, AudioObjectPropertySelector selector, UInt32* size,
                     void* data) {
  const platform::AudioProcess& process = desktop().world.audio->at(place);
  const AudioFaults& all = desktop().audioFaults;
  const AudioFaults faults = all.onlyProcess.value_or(place) == place ? all : AudioFaults{};
  if (selector == processBundle) return giveBundle(process, faults, size, data);
  if (selector == processCaptures) {
    const UInt32 value = faults.inputValue.value_or(process.input ? 1 : 0);
    const OSStatus status = give(&value, sizeof value, size, data, faults.inputReturned);
    return faults.inputStatus.value_or(status);
  }
  if (selector == processPlays) {
    const UInt32 value = faults.outputValue.value_or(process.output ? 1 : 0);
    const OSStatus status = give(&value, sizeof value, size, data, faults.outputReturned);
    return faults.outputStatus.value_or(status);
  }
  return badProperty;
}

}  // namespace
}  // namespace callmonitor::standins

using namespace callmonitor::standins;

extern "C" {

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size) {
  requireNoQualifier(qualifierSize, qualifier);
  arrive("AudioObjectGetPropertyDataSize");
  const AudioFaults& faults = desktop().audioFaults;
  const auto& processes = desktop().world.audio;
  if (faults.sizeStatus) return *faults.sizeStatus;
  if (object != kAudioObjectSystemObject || !global(*address) ||
      address->mSelector != processList || !processes) {
    return badProperty;
  }
  // Where the world's list is known and empty, the last process ended after this question.
  const std::size_t count = std::max<std::size_t>(processes->size(), 1);
  *size = faults.size.value_or(static_cast<UInt32>(count * sizeof(AudioObjectID)));
  return noError;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size,
                                    void* data) {
  requireNoQualifier(qualifierSize, qualifier);
  arrive("AudioObjectGetPropertyData");
  if (!global(*address)) return badProperty;
  if (object == kAudioObjectSystemObject && address->mSelector == processList) {
    return giveList(size, data);
  }
  const auto& processes = desktop().world.audio;
  if (!processes || object < firstProcess || object - firstProcess >= processes->size()) {
    return badObject;
  }
  return giveProcess(object - firstProcess, address->mSelector, size, data);
}

}  // extern "C"
