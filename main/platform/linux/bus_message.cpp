// sd-bus waits without limit while a connection is being made, so that wait has a loop of its own.
#include "platform/linux/bus_message.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace callmonitor::platform {

std::optional<std::uint64_t> timeFor(const BusTarget& target, double now) {
  if (!target.deadline) return target.limit;
  const double left = (*target.deadline - now) * 1e6;
  // Less than a microsecond would be zero, which the library takes for its own long limit.
  if (left < 1) return std::nullopt;
  return std::min(target.limit, static_cast<std::uint64_t>(left));
}

BusConnection openBus(const std::string& address, FarEnd end, double deadline, bool* late) {
  if (late != nullptr) *late = false;
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  BusConnection bus(made);
  if (sd_bus_set_address(made, address.c_str()) < 0 ||
      sd_bus_set_bus_client(made, end == FarEnd::bus ? 1 : 0) < 0 || sd_bus_start(made) < 0) {
    return nullptr;
  }
  while (sd_bus_is_ready(made) == 0) {
    const int processed = sd_bus_process(made, nullptr);
    if (processed < 0) return nullptr;
    if (processed > 0) continue;
    const double left = deadline - systemUptime();
    if (left <= 0) {
      if (late != nullptr) *late = true;
      return nullptr;
    }
    const int waited = sd_bus_wait(made, static_cast<std::uint64_t>(left * 1e6));
    if (waited < 0 && waited != -EINTR) return nullptr;
  }
  return sd_bus_is_ready(made) > 0 ? std::move(bus) : nullptr;
}

bool ofSameUser(sd_bus* connection) {
  const int descriptor = sd_bus_get_fd(connection);
  ucred credentials{};
  socklen_t size = sizeof credentials;
  return descriptor >= 0 &&
         getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 &&
         credentials.uid == geteuid();
}

BusMessage newCall(sd_bus* connection, const ObjectName& object, const char* interface,
                   const char* member, FarEnd end) {
  sd_bus_message* message = nullptr;
  const char* destination = end == FarEnd::bus ? object.bus.c_str() : nullptr;
  if (connection == nullptr ||
      sd_bus_message_new_method_call(connection, &message, destination, object.path.c_str(),
                                     interface, member) < 0) {
    return {};
  }
  return BusMessage(message);
}

bool discardArrived(sd_bus* connection) {
  // Bounded, for an application may send without end.
  constexpr int most = 1000;
  for (int count = 0; count < most; ++count) {
    const int processed = sd_bus_process(connection, nullptr);
    if (processed < 0) return false;
    if (processed == 0) break;
  }
  return sd_bus_is_open(connection) > 0;
}

}  // namespace callmonitor::platform
