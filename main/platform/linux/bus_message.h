// What goes over a bus: who a message is for, how long it may take, and what comes back.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "platform/platform.h"

namespace callmonitor::platform {

// The limit of a message that is not an application's own affair, and of each step of connecting.
inline constexpr std::uint64_t messageLimit = 200'000;  // microseconds

// One object on the bus. The bus name is the unique one, which is never given out twice. It names
// the object whichever connection leads to it.
struct ObjectName {
  std::string bus;
  std::string path;

  friend bool operator==(const ObjectName&, const ObjectName&) = default;
  friend bool operator<(const ObjectName& left, const ObjectName& right) {
    return std::tie(left.bus, left.path) < std::tie(right.bus, right.path);
  }
};

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using BusConnection = std::unique_ptr<sd_bus, CloseBus>;

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

// The far end of a connection: a bus that passes messages on by name, or the application itself.
enum class FarEnd { bus, peer };

// Whatever kind of address it is given is tried, so what others tell must have been looked at.
// Null when nothing at the address completes the connection by `deadline` (uptime seconds), however
// the far end is stopped: the library's own wait would have no end. `late`, where given, tells
// whether it was for want of time.
[[nodiscard]] BusConnection openBus(const std::string& address, FarEnd end, double deadline,
                                    bool* late = nullptr);

// Whether the far end of an open connection is a process of the user that this one runs as. False
// where that cannot be told.
[[nodiscard]] bool ofSameUser(sd_bus* connection);

// Null when the message cannot be made. A peer is its messages' destination without being named.
[[nodiscard]] BusMessage newCall(sd_bus* connection, const ObjectName& object,
                                 const char* interface, const char* member,
                                 FarEnd end = FarEnd::bus);

// Takes what arrived unasked or too late off the connection's queue. False when the connection has
// ended.
bool discardArrived(sd_bus* connection);

}  // namespace callmonitor::platform
