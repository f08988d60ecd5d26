// What the macOS platform uses of this framework's audio objects, declared from its public
// documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

using AudioObjectID = UInt32;
using AudioObjectPropertySelector = UInt32;
using AudioObjectPropertyScope = UInt32;
using AudioObjectPropertyElement = UInt32;

struct AudioObjectPropertyAddress {
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};

enum : AudioObjectID { kAudioObjectSystemObject = 1 };
enum : AudioObjectPropertyScope { kAudioObjectPropertyScopeGlobal = 0x676C6F62 };  // 'glob'
enum : AudioObjectPropertyElement { kAudioObjectPropertyElementMain = 0 };

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                        const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size);
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size,
                                    void* data);

}  // extern "C"
