// sd-bus waits without limit while a connection is being made, so that wait has a loop of its own.
// Everything after it is bounded by the library's own time limit of a call.
#include "platform/linux/accessibility_bus.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "platform/linux/message_errors.h"

namespace callmonitor::platform {
namespace {

using BusConnection = std::unique_ptr<sd_bus, AccessibilityBus::Close>;

constexpr const char* statusInterface = "org.a11y.Status";

std::string sessionBusAddress() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && *address != '\0') return address;
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const std::string directory = runtime != nullptr && *runtime != '\0'
                                    ? std::string(runtime)
                                    : "/run/user/" + std::to_string(getuid());
  return "unix:path=" + directory + "/bus";
}

// Null when nothing answers at the address within the limit.
BusConnection openBus(const std::string& address) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  BusConnection bus(made);
  if (sd_bus_set_address(made, address.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 ||
      sd_bus_start(made) < 0) {
    return nullptr;
  }
  const double deadline = systemUptime() + static_cast<double>(messageLimit) / 1e6;
  while (sd_bus_is_ready(made) == 0) {
    const int processed = sd_bus_process(made, nullptr);
    if (processed < 0) return nullptr;
    if (processed > 0) continue;
    const double left = deadline - systemUptime();
    if (left <= 0 || sd_bus_wait(made, static_cast<std::uint64_t>(left * 1e6)) < 0) return nullptr;
  }
  return sd_bus_is_ready(made) > 0 ? std::move(bus) : nullptr;
}

BusMessage callOn(sd_bus* bus, BusMessage message) {
  sd_bus_message* reply = nullptr;
  if (!message || sd_bus_call(bus, message.get(), messageLimit, nullptr, &reply) < 0) return {};
  return BusMessage(reply);
}

const ObjectName& accessibilityService() {
  static const ObjectName service{"org.a11y.Bus", "/org/a11y/bus"};
  return service;
}

const BusTarget& busDaemon() {
  static const BusTarget daemon{{"org.freedesktop.DBus", "/org/freedesktop/DBus"}};
  return daemon;
}

// Empty when the session has no accessibility bus.
std::string accessibilityBusAddress(sd_bus* session) {
  const BusMessage reply =
      callOn(session, newCall(session, accessibilityService(), "org.a11y.Bus", "GetAddress"));
  const char* address = nullptr;
  if (!reply || sd_bus_message_read(reply.get(), "s", &address) < 0) return {};
  return address;
}

// Browsers look at this once, when they start: what starts later can then be read. A desktop on
// which it is already on is left alone.
void enableAccessibility(sd_bus* session) {
  constexpr const char* properties = "org.freedesktop.DBus.Properties";
  BusMessage get = newCall(session, accessibilityService(), properties, "Get");
  if (!get || sd_bus_message_append(get.get(), "ss", statusInterface, "IsEnabled") < 0) return;
  const BusMessage reply = callOn(session, std::move(get));
  int enabled = 0;
  if (!reply || sd_bus_message_read(reply.get(), "v", "b", &enabled) < 0 || enabled != 0) return;
  BusMessage set = newCall(session, accessibilityService(), properties, "Set");
  if (!set || sd_bus_message_append(set.get(), "ssv", statusInterface, "IsEnabled", "b", 1) < 0) {
    return;
  }
  callOn(session, std::move(set));
}

}  // namespace

bool ensureConnected(AccessibilityBus& bus) {
  if (bus.connection && sd_bus_is_open(bus.connection.get()) > 0) return true;
  bus.connection.reset();
  const BusConnection session = openBus(sessionBusAddress());
  if (!session) return false;
  const std::string address = accessibilityBusAddress(session.get());
  if (address.empty()) return false;
  if (bus.mayEnable) enableAccessibility(session.get());
  bus.connection = openBus(address);
  if (!bus.connection) return false;
  // That the bus was late once says nothing about the new connection.
  bus.silent.erase(busDaemon().object.bus);
  sd_id128_t server{};
  const bool same = sd_bus_get_bus_id(bus.connection.get(), &server) >= 0 && bus.generation > 0 &&
                    sd_id128_equal(server, bus.server) != 0;
  if (!same) ++bus.generation;
  bus.server = server;
  return true;
}

bool busAnswers(AccessibilityBus& bus) {
  if (!bus.connection) return false;
  if (call(bus, busDaemon(), "org.freedesktop.DBus", "GetId").code == code::success) return true;
  bus.connection.reset();
  return false;
}

void discardUnasked(AccessibilityBus& bus) {
  // Bounded, for an application may send without end.
  constexpr int most = 1000;
  for (int count = 0; bus.connection && count < most; ++count) {
    const int processed = sd_bus_process(bus.connection.get(), nullptr);
    if (processed < 0) bus.connection.reset();
    if (processed <= 0) return;
  }
}

BusMessage newCall(sd_bus* connection, const ObjectName& object, const char* interface,
                   const char* member) {
  sd_bus_message* message = nullptr;
  if (connection == nullptr ||
      sd_bus_message_new_method_call(connection, &message, object.bus.c_str(), object.path.c_str(),
                                     interface, member) < 0) {
    return {};
  }
  return BusMessage(message);
}

std::optional<std::uint64_t> timeFor(const BusTarget& target, double now) {
  if (!target.deadline) return target.limit;
  const double left = (*target.deadline - now) * 1e6;
  // Less than a microsecond would be zero, which the library takes for its own long limit.
  if (left < 1) return std::nullopt;
  return std::min(target.limit, static_cast<std::uint64_t>(left));
}

BusReply send(AccessibilityBus& bus, const BusTarget& target, BusMessage message) {
  if (!bus.connection || bus.silent.contains(target.object.bus)) return {code::cannotComplete, {}};
  const auto limit = timeFor(target, systemUptime());
  if (!limit) {
    if (bus.rememberSilent) bus.silent.insert(target.object.bus);
    return {code::cannotComplete, {}};
  }
  sd_bus_error error{};
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_call(bus.connection.get(), message.get(), *limit, &error, &reply);
  if (result >= 0) return {code::success, BusMessage(reply)};

  std::int32_t outcome = error.name != nullptr ? codeOfBusError(error.name) : code::failure;
  const bool late = result == -ETIMEDOUT || (error.name != nullptr && isTimeout(error.name));
  if (late) {
    outcome = code::cannotComplete;
    if (bus.rememberSilent) bus.silent.insert(target.object.bus);
  }
  if (sd_bus_is_open(bus.connection.get()) <= 0) {
    outcome = code::cannotComplete;
    bus.connection.reset();
  }
  sd_bus_error_free(&error);
  return {outcome, {}};
}

}  // namespace callmonitor::platform
