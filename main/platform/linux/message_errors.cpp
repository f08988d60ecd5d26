// One table, error name to code.
#include "platform/linux/message_errors.h"

#include <array>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

struct Row {
  std::string_view name;
  std::int32_t code;
};

constexpr std::string_view prefix = "org.freedesktop.DBus.Error.";

constexpr std::array rows{
    Row{"UnknownObject", code::invalidElement},
    Row{"Timeout", code::cannotComplete},
    Row{"TimedOut", code::cannotComplete},
    Row{"NoReply", code::cannotComplete},
    Row{"ServiceUnknown", code::cannotComplete},
    Row{"NameHasNoOwner", code::cannotComplete},
    Row{"Disconnected", code::cannotComplete},
    Row{"NoServer", code::cannotComplete},
    Row{"UnknownMethod", code::attributeUnsupported},
    Row{"UnknownInterface", code::attributeUnsupported},
    Row{"UnknownProperty", code::attributeUnsupported},
};

}  // namespace

std::int32_t codeOfBusError(std::string_view name) {
  if (!name.starts_with(prefix)) return code::failure;
  name.remove_prefix(prefix.size());
  for (const Row& row : rows) {
    if (row.name == name) return row.code;
  }
  return code::failure;
}

bool isTimeout(std::string_view name) {
  return name == "org.freedesktop.DBus.Error.Timeout" ||
         name == "org.freedesktop.DBus.Error.TimedOut";
}

}  // namespace callmonitor::platform
