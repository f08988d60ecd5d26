// Outside the pipeline, messages are bounded by the library's own time limit of a call.
#include "platform/linux/accessibility_bus.h"

#include <cerrno>
#include <cstdlib>

#include "platform/linux/bus_address.h"
#include "platform/linux/message_errors.h"
#include "platform/linux/runtime_directory.h"

namespace callmonitor::platform {
namespace {

constexpr const char* statusInterface = "org.a11y.Status";

// Seconds between two looks at the switch: what starts while it is off stays unreadable, and a look
// costs a connection.
constexpr double switchPeriod = 60.0;

// The moment by which a step that begins now must be done.
double deadlineFromNow() {
  return systemUptime() + static_cast<double>(messageLimit) / 1e6;
}

std::string sessionBusAddress() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && *address != '\0') return address;
  return "unix:path=" + runtimeDirectory() + "/bus";
}

// Null when nothing answers at the address within the limit.
BusConnection openBusSoon(const std::string& address) {
  return openBus(address, FarEnd::bus, deadlineFromNow());
}

BusMessage callOn(sd_bus* bus, BusMessage message, double deadline) {
  const auto limit = timeFor({{}, messageLimit, deadline}, systemUptime());
  sd_bus_message* reply = nullptr;
  if (!limit || !message || sd_bus_call(bus, message.get(), *limit, nullptr, &reply) < 0) return {};
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

// Empty when the session has no accessibility bus. Whoever owns the service's name tells the
// address, so it is no more trusted than any other answer.
std::string accessibilityBusAddress(sd_bus* session) {
  const BusMessage reply =
      callOn(session, newCall(session, accessibilityService(), "org.a11y.Bus", "GetAddress"),
             deadlineFromNow());
  const char* address = nullptr;
  if (!reply || sd_bus_message_read(reply.get(), "s", &address) < 0) return {};
  return namesLocalSockets(address) ? address : std::string();
}

// Browsers look at this once, when they start: what starts later can then be read. A desktop on
// which it is already on is left alone.
void enableAccessibility(AccessibilityBus& bus, sd_bus* session, double deadline) {
  if (!bus.mayEnable) return;
  bus.nextSwitchLook = systemUptime() + switchPeriod;
  constexpr const char* properties = "org.freedesktop.DBus.Properties";
  BusMessage get = newCall(session, accessibilityService(), properties, "Get");
  if (!get || sd_bus_message_append(get.get(), "ss", statusInterface, "IsEnabled") < 0) return;
  const BusMessage reply = callOn(session, std::move(get), deadline);
  int enabled = 0;
  if (!reply || sd_bus_message_read(reply.get(), "v", "b", &enabled) < 0 || enabled != 0) return;
  BusMessage set = newCall(session, accessibilityService(), properties, "Set");
  if (!set || sd_bus_message_append(set.get(), "ssv", statusInterface, "IsEnabled", "b", 1) < 0) {
    return;
  }
  callOn(session, std::move(set), deadline);
}

// An application that was late once would be late again, and again cost its whole limit.
BusReply overdue(AccessibilityBus& bus, const BusTarget& target) {
  if (bus.rememberSilent) bus.silent.insert(target.object.bus);
  if (leadsTo(bus.pipeline, target.object.bus)) closePipeline(bus.pipeline);
  return {code::cannotComplete, {}};
}

// That a connection ended says nothing about the elements behind it.
BusReply lost(AccessibilityBus& bus) {
  if (bus.pipeline.end == FarEnd::bus) bus.connection.reset();
  closePipeline(bus.pipeline);
  return {code::cannotComplete, {}};
}

}  // namespace

bool ensureConnected(AccessibilityBus& bus) {
  if (bus.connection && sd_bus_is_open(bus.connection.get()) > 0) return true;
  bus.connection.reset();
  const BusConnection session = openBusSoon(sessionBusAddress());
  if (!session) return false;
  const std::string address = accessibilityBusAddress(session.get());
  if (address.empty()) return false;
  enableAccessibility(bus, session.get(), deadlineFromNow());
  bus.connection = openBusSoon(address);
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

void keepEnabled(AccessibilityBus& bus) {
  if (!bus.mayEnable || systemUptime() < bus.nextSwitchLook) return;
  // Also a session bus that does not answer is tried again no sooner.
  bus.nextSwitchLook = systemUptime() + switchPeriod;
  const double deadline = deadlineFromNow();
  const BusConnection session = openBus(sessionBusAddress(), FarEnd::bus, deadline);
  if (session) enableAccessibility(bus, session.get(), deadline);
}

bool busAnswers(AccessibilityBus& bus) {
  if (!bus.connection) return false;
  if (call(bus, busDaemon(), "org.freedesktop.DBus", "GetId").code == code::success) return true;
  bus.connection.reset();
  return false;
}

void discardUnasked(AccessibilityBus& bus) {
  if (bus.connection && !discardArrived(bus.connection.get())) bus.connection.reset();
}

BusMessage callTo(const AccessibilityBus& bus, const ObjectName& object, const char* interface,
                  const char* member) {
  if (leadsTo(bus.pipeline, object.bus)) {
    return newCall(bus.pipeline.connection.get(), object, interface, member, bus.pipeline.end);
  }
  return newCall(bus.connection.get(), object, interface, member);
}

BusReply send(AccessibilityBus& bus, const BusTarget& target, const char* member,
              BusMessage message) {
  if (!bus.connection || bus.silent.contains(target.object.bus)) return {code::cannotComplete, {}};
  const auto limit = timeFor(target, systemUptime());
  if (!limit) return overdue(bus, target);
  if (leadsTo(bus.pipeline, target.object.bus)) {
    if (!submit(bus.pipeline, target.object, member, std::move(message), bus.observer)) {
      return lost(bus);
    }
    return awaitReply(bus, target, member);
  }
  if (bus.observer) bus.observer(target.object, member);
  sd_bus_error error{};
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_call(bus.connection.get(), message.get(), *limit, &error, &reply);
  if (result >= 0) return {code::success, BusMessage(reply)};

  std::int32_t outcome = error.name != nullptr ? codeOfBusError(error.name) : code::failure;
  const bool late = result == -ETIMEDOUT || (error.name != nullptr && isTimeout(error.name));
  if (late) outcome = overdue(bus, target).code;
  if (sd_bus_is_open(bus.connection.get()) <= 0) {
    outcome = code::cannotComplete;
    bus.connection.reset();
  }
  sd_bus_error_free(&error);
  return {outcome, {}};
}

BusReply awaitReply(AccessibilityBus& bus, const BusTarget& target, const char* member) {
  if (bus.silent.contains(target.object.bus)) return {code::cannotComplete, {}};
  const auto limit = timeFor(target, systemUptime());
  if (!limit) return overdue(bus, target);
  BusMessage reply;
  switch (takeReply(bus.pipeline, target.object, member, *limit, reply)) {
    case Waited::late:
      return overdue(bus, target);
    case Waited::lost:
      return lost(bus);
    case Waited::answered:
      break;
  }
  if (sd_bus_message_is_method_error(reply.get(), nullptr) <= 0) {
    return {code::success, std::move(reply)};
  }
  const sd_bus_error* error = sd_bus_message_get_error(reply.get());
  const bool named = error != nullptr && error->name != nullptr;
  if (named && isTimeout(error->name)) return overdue(bus, target);
  return {named ? codeOfBusError(error->name) : code::failure, {}};
}

}  // namespace callmonitor::platform
