// xcb waits without limit while it connects and in its reply functions. So a server is first asked
// whether it answers at all, and replies are polled for.
#include "platform/linux/x11_connection.h"

#include <signal.h>

#include <ctime>

#include "platform/linux/x11_display.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(Atom::count)> atomNames{
    "_NET_CLIENT_LIST",
    "_NET_ACTIVE_WINDOW",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "WM_STATE",
    "UTF8_STRING"};

bool readAtoms(X11Connection& x11) {
  std::array<xcb_intern_atom_cookie_t, atomNames.size()> cookies{};
  for (std::size_t at = 0; at < atomNames.size(); ++at) {
    cookies[at] =
        xcb_intern_atom(x11.connection.get(), 0, static_cast<std::uint16_t>(atomNames[at].size()),
                        atomNames[at].data());
  }
  const double deadline = x11Deadline();
  for (std::size_t at = 0; at < atomNames.size(); ++at) {
    const auto reply = awaitX11<xcb_intern_atom_reply_t>(x11, cookies[at], deadline);
    if (!reply) return false;
    x11.atoms[at] = reply->atom;
  }
  return true;
}

// No event is asked for, but some come unasked and would pile up.
bool stillConnected(X11Connection& x11) {
  if (!x11.connection) return false;
  while (void* event = xcb_poll_for_event(x11.connection.get())) std::free(event);
  return xcb_connection_has_error(x11.connection.get()) == 0;
}

}  // namespace

HeldPipeSignal::HeldPipeSignal() {
  sigset_t pipe;
  sigset_t before;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  held_ = pthread_sigmask(SIG_BLOCK, &pipe, &before) == 0 && sigismember(&before, SIGPIPE) == 0;
}

HeldPipeSignal::~HeldPipeSignal() {
  if (!held_) return;
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  const timespec now{0, 0};
  sigtimedwait(&pipe, nullptr, &now);
  pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
}

double x11Deadline() {
  return systemUptime() + x11ExchangeLimit;
}

bool ensureX11(X11Connection& x11) {
  if (x11.silent) return false;
  if (stillConnected(x11)) return true;
  x11.connection.reset();
  if (!displayAnswers(nullptr)) {
    x11.silent = x11.rememberSilent;
    return false;
  }
  int screenNumber = 0;
  x11.connection.reset(xcb_connect(nullptr, &screenNumber));
  if (xcb_connection_has_error(x11.connection.get()) != 0) {
    x11.connection.reset();
    return false;
  }
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(x11.connection.get()));
  while (screenNumber-- > 0 && screens.rem > 1) xcb_screen_next(&screens);
  if (screens.rem == 0) {
    x11.connection.reset();
    return false;
  }
  x11.root = screens.data->root;
  if (!readAtoms(x11)) x11.connection.reset();
  return x11.connection != nullptr;
}

void* awaitX11Reply(X11Connection& x11, unsigned int sequence, double deadline) {
  if (!x11.connection) return nullptr;
  xcb_flush(x11.connection.get());
  while (true) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(x11.connection.get(), sequence, &reply, &error) != 0) {
      std::free(error);
      if (xcb_connection_has_error(x11.connection.get()) != 0) break;
      return reply;
    }
    if (xcb_connection_has_error(x11.connection.get()) != 0 ||
        !readableBy(deadline, xcb_get_file_descriptor(x11.connection.get()))) {
      break;
    }
  }
  x11.connection.reset();
  x11.silent = x11.rememberSilent;
  return nullptr;
}

}  // namespace callmonitor::platform
