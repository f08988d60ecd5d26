#include "platform/linux/sound_properties.h"

#include <charconv>
#include <system_error>

namespace callmonitor::platform {

std::string_view propertyOf(const SoundProperties& properties, std::string_view name) {
  const auto found = properties.find(name);
  return found != properties.end() ? std::string_view(found->second) : std::string_view();
}

bool isSet(const SoundProperties& properties, std::string_view name) {
  const std::string_view value = propertyOf(properties, name);
  return value == "true" || value == "1";
}

std::optional<std::int32_t> processIn(const SoundProperties& properties, std::string_view name) {
  const std::string_view text = propertyOf(properties, name);
  std::int32_t pid = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pid);
  if (error != std::errc() || end != text.data() + text.size() || pid <= 0) return std::nullopt;
  return pid;
}

}  // namespace callmonitor::platform
