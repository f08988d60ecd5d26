// The bounded exchange with the window server that everything in x11.cpp is made of.
#pragma once

#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

namespace callmonitor::platform {

// The names of properties and property values that are read, in the order of `atomNames`.
enum class Atom : std::size_t {
  clientList,
  activeWindow,
  name,
  pid,
  state,
  stateHidden,
  type,
  typeNormal,
  typeDialog,
  typeUtility,
  wmState,
  utf8String,
  count
};

struct X11Connection {
  struct Disconnect {
    void operator()(xcb_connection_t* open) const { xcb_disconnect(open); }
  };
  std::unique_ptr<xcb_connection_t, Disconnect> connection;
  xcb_window_t root = XCB_NONE;
  std::array<xcb_atom_t, static_cast<std::size_t>(Atom::count)> atoms{};
  // A server that did not answer in time in this cycle is not asked again in it.
  bool rememberSilent = false;
  bool silent = false;
};

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};
template <class Reply>
using X11Reply = std::unique_ptr<Reply, FreeReply>;

[[nodiscard]] inline xcb_atom_t atom(const X11Connection& x11, Atom which) {
  return x11.atoms[static_cast<std::size_t>(which)];
}

// A write to a server that has died raises SIGPIPE, whose default disposition ends the program.
// While one of these stands the signal is held back, and one that arrived is taken away.
class HeldPipeSignal {
 public:
  HeldPipeSignal();
  ~HeldPipeSignal();
  HeldPipeSignal(const HeldPipeSignal&) = delete;
  HeldPipeSignal& operator=(const HeldPipeSignal&) = delete;

 private:
  bool held_ = false;
};

// Connects unless connected. False when there is no display or its server does not answer.
bool ensureX11(X11Connection& x11);

// Waits for the reply to request `sequence`, at most until `deadline` (CLOCK_MONOTONIC seconds).
// Null when the server answered with an error. A server that is late or gone loses the connection.
[[nodiscard]] void* awaitX11Reply(X11Connection& x11, unsigned int sequence, double deadline);

// The moment until which an exchange that begins now may last.
[[nodiscard]] double x11Deadline();

template <class Reply, class Cookie>
[[nodiscard]] X11Reply<Reply> awaitX11(X11Connection& x11, Cookie cookie, double deadline) {
  return X11Reply<Reply>(static_cast<Reply*>(awaitX11Reply(x11, cookie.sequence, deadline)));
}

}  // namespace callmonitor::platform
