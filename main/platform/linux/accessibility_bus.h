// The connection to the desktop's accessibility bus, and the one way in which a message goes out on
// it: bounded, with its outcome as a code. One is answered at a time, but for what is asked ahead
// through the pipeline.
#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-id128.h>

#include <cstdint>
#include <set>
#include <string>
#include <utility>

#include "platform/linux/bus_message.h"
#include "platform/linux/message_pipeline.h"
#include "platform/platform.h"

namespace callmonitor::platform {

struct AccessibilityBus {
  BusConnection connection;
  // Counts buses. Unique names start afresh on a new bus, so an object is the same object only
  // within one bus; a second connection to the same one changes nothing.
  std::uint64_t generation = 0;
  sd_id128_t server{};  // the bus's own identifier
  // Whether accessibility may be switched on for the desktop's applications.
  bool mayEnable = false;
  double nextSwitchLook = 0;  // uptime seconds; not before then is that switch looked at again
  // Applications that did not answer in time in this cycle; they are not asked again in it.
  bool rememberSilent = false;
  std::set<std::string> silent;
  // Open while an application's elements are walked; its messages then go this way.
  Pipeline pipeline;
  // Told of every message, whichever way it goes; empty but in tests.
  MessageObserver observer;
};

// Connects through the session bus unless connected, and, where `mayEnable` says so, switches
// accessibility on if it is off, once for each connection. Takes at most a few `messageLimit`.
bool ensureConnected(AccessibilityBus& bus);

// Where `mayEnable` says so, looks once a minute whether accessibility was switched off since, and
// switches it on again. Takes at most one `messageLimit`.
void keepEnabled(AccessibilityBus& bus);

// Whether the bus itself answers now. A connection that does not is given up.
[[nodiscard]] bool busAnswers(AccessibilityBus& bus);

// Takes what arrived unasked or too late off the queue.
void discardUnasked(AccessibilityBus& bus);

// Makes a call that goes the way that leads to the object now. Null when it cannot be made.
[[nodiscard]] BusMessage callTo(const AccessibilityBus& bus, const ObjectName& object,
                                const char* interface, const char* member);
// Sends a call that `callTo` made and waits for its reply. `member` is a literal.
[[nodiscard]] BusReply send(AccessibilityBus& bus, const BusTarget& target, const char* member,
                            BusMessage message);
// Takes the reply to a call that is under way in the pipeline, waiting for it from now on.
[[nodiscard]] BusReply awaitReply(AccessibilityBus& bus, const BusTarget& target,
                                  const char* member);

// Puts a call under way in the pipeline without waiting, unless it is already. `askAhead` is only
// for an application that the pipeline leads to. False when it could not be sent.
template <class... Arguments>
bool askAhead(AccessibilityBus& bus, const ObjectName& object, const char* interface,
              const char* member, const char* types = "", Arguments... arguments) {
  if (isUnderway(bus.pipeline, object, member)) return true;
  BusMessage message = callTo(bus, object, interface, member);
  if (!message) return false;
  if constexpr (sizeof...(arguments) > 0) {
    if (sd_bus_message_append(message.get(), types, arguments...) < 0) return false;
  }
  return submit(bus.pipeline, object, member, std::move(message), bus.observer);
}

// Calls a method with `arguments` of the D-Bus types `types` (as sd_bus_message_append takes them).
template <class... Arguments>
[[nodiscard]] BusReply call(AccessibilityBus& bus, const BusTarget& target, const char* interface,
                            const char* member, const char* types = "", Arguments... arguments) {
  if (isUnderway(bus.pipeline, target.object, member)) return awaitReply(bus, target, member);
  BusMessage message = callTo(bus, target.object, interface, member);
  if (!message) return {code::cannotComplete, {}};
  if constexpr (sizeof...(arguments) > 0) {
    if (sd_bus_message_append(message.get(), types, arguments...) < 0) return {};
  }
  return send(bus, target, member, std::move(message));
}

}  // namespace callmonitor::platform
