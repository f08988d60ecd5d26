// The connection to the desktop's accessibility bus, and the one way in which a message goes out on
// it: bounded, one at a time, with its outcome as a code.
#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-id128.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "platform/platform.h"

namespace callmonitor::platform {

// The limit of a message that is not an application's own affair, and of each step of connecting.
inline constexpr std::uint64_t messageLimit = 200'000;  // microseconds

// One object on the bus. The bus name is the unique one, which is never given out twice.
struct ObjectName {
  std::string bus;
  std::string path;

  friend bool operator==(const ObjectName&, const ObjectName&) = default;
  friend bool operator<(const ObjectName& left, const ObjectName& right) {
    return std::tie(left.bus, left.path) < std::tie(right.bus, right.path);
  }
};

struct AccessibilityBus {
  struct Close {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };
  std::unique_ptr<sd_bus, Close> connection;
  // Counts buses. Unique names start afresh on a new bus, so an object is the same object only
  // within one bus; a second connection to the same one changes nothing.
  std::uint64_t generation = 0;
  sd_id128_t server{};  // the bus's own identifier
  // Whether accessibility may be switched on for the desktop's applications.
  bool mayEnable = false;
  // Applications that did not answer in time in this cycle; they are not asked again in it.
  bool rememberSilent = false;
  std::set<std::string> silent;
};

// Connects through the session bus unless connected, and, where `mayEnable` says so, switches
// accessibility on if it is off, once for each connection. Takes at most a few `messageLimit`.
bool ensureConnected(AccessibilityBus& bus);

// Whether the bus itself answers now. A connection that does not is given up.
[[nodiscard]] bool busAnswers(AccessibilityBus& bus);

// Takes what arrived unasked or too late off the queue.
void discardUnasked(AccessibilityBus& bus);

struct Unreference {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, Unreference>;

// A message is there exactly when the code is `code::success`.
struct BusReply {
  std::int32_t code = code::failure;
  BusMessage message;
};

// Where a message goes and how long it may take.
struct BusTarget {
  ObjectName object;
  std::uint64_t limit = messageLimit;  // microseconds
  // The moment (uptime seconds) by which a whole question of several messages must be answered. An
  // application that is not done by then counts as silent, however fast its single answers are.
  std::optional<double> deadline = std::nullopt;

  // The same limits for another object of the application.
  [[nodiscard]] BusTarget at(ObjectName other) const { return {std::move(other), limit, deadline}; }
};

// How long a message that goes out at `now` (uptime seconds) may take, in microseconds: never more
// than the target's limit; absent when its deadline has passed.
[[nodiscard]] std::optional<std::uint64_t> timeFor(const BusTarget& target, double now);

[[nodiscard]] BusMessage newCall(sd_bus* connection, const ObjectName& object,
                                 const char* interface, const char* member);
[[nodiscard]] BusReply send(AccessibilityBus& bus, const BusTarget& target, BusMessage message);

// Calls a method with `arguments` of the D-Bus types `types` (as sd_bus_message_append takes them).
template <class... Arguments>
[[nodiscard]] BusReply call(AccessibilityBus& bus, const BusTarget& target, const char* interface,
                            const char* member, const char* types = "", Arguments... arguments) {
  BusMessage message = newCall(bus.connection.get(), target.object, interface, member);
  if (!message) return {code::cannotComplete, {}};
  if constexpr (sizeof...(arguments) > 0) {
    if (sd_bus_message_append(message.get(), types, arguments...) < 0) return {};
  }
  return send(bus, target, std::move(message));
}

}  // namespace callmonitor::platform
