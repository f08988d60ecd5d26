// The library cuts addresses at the same two characters, before it decodes what stands between.
#include "platform/linux/bus_address.h"

#include <array>
#include <cstddef>

namespace callmonitor::platform {
namespace {

constexpr std::array<std::string_view, 2> socketKeys{"unix:path=", "unix:abstract="};
// Which server it is; buses add this to their addresses.
constexpr std::string_view serverKey = "guid=";

// Takes what stands before the first `end`, or the whole text, off the text.
std::string_view takeUntil(std::string_view& text, char end) {
  const std::size_t length = text.find(end);
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(length == std::string_view::npos ? text.size() : length + 1);
  return taken;
}

bool namesSocket(std::string_view part) {
  for (const std::string_view key : socketKeys) {
    if (part.starts_with(key)) return part.size() > key.size();
  }
  return false;
}

bool isLocalSocket(std::string_view alternative) {
  if (alternative.ends_with(',') || !namesSocket(takeUntil(alternative, ','))) return false;
  while (!alternative.empty()) {
    if (!takeUntil(alternative, ',').starts_with(serverKey)) return false;
  }
  return true;
}

}  // namespace

bool namesLocalSockets(std::string_view address) {
  if (address.empty() || address.ends_with(';')) return false;
  while (!address.empty()) {
    if (!isLocalSocket(takeUntil(address, ';'))) return false;
  }
  return true;
}

}  // namespace callmonitor::platform
