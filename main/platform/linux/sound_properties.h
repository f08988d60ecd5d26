// What a sound server says of its objects, by name.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace callmonitor::platform {

// What a server says of an object, by name; valid UTF-8 is not promised.
using SoundProperties = std::map<std::string, std::string, std::less<>>;

// The value of a property; empty when the object has none of that name.
[[nodiscard]] std::string_view propertyOf(const SoundProperties& properties, std::string_view name);
// Whether a property is set to what the servers write for "yes".
[[nodiscard]] bool isSet(const SoundProperties& properties, std::string_view name);
// A property that is a process id; absent when there is none or it cannot be one.
[[nodiscard]] std::optional<std::int32_t> processIn(const SoundProperties& properties,
                                                    std::string_view name);

}  // namespace callmonitor::platform
