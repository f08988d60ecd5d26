// xcb waits without limit while it connects and in its reply functions. So a server is first asked
// over a socket of our own whether it answers at all, and replies are polled for.
#include "platform/linux/x11_connection.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <string>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// The limit of every message to a desktop.
constexpr double exchangeLimit = 0.2;  // seconds

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

// False when the time is up first.
bool waitFor(int file, short events, double deadline) {
  const double left = deadline - systemUptime();
  if (left <= 0) return false;
  pollfd entry{file, events, 0};
  return poll(&entry, 1, static_cast<int>(left * 1000) + 1) > 0;
}

// Whether the server behind a local display's socket answers a greeting. Any answer will do, a
// refusal included: the real connection follows.
bool serverAnswers(int display) {
  const std::string path = "/tmp/.X11-unix/X" + std::to_string(display);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return false;
  std::copy(path.begin(), path.end(), address.sun_path);
  const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (file < 0) return false;
  // Byte order, protocol 11.0, no authorisation.
  constexpr std::array<unsigned char, 12> greeting{'l', 0, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  bool answered = false;
  if (connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
      send(file, greeting.data(), greeting.size(), MSG_NOSIGNAL) ==
          static_cast<ssize_t>(greeting.size()) &&
      waitFor(file, POLLIN, systemUptime() + exchangeLimit)) {
    char byte = 0;
    answered = recv(file, &byte, 1, MSG_DONTWAIT) == 1;
  }
  close(file);
  return answered;
}

bool displayAnswers() {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  if (xcb_parse_display(nullptr, &host, &display, &screen) == 0) return false;
  const bool local = host == nullptr || *host == '\0' || std::string_view(host) == "unix";
  std::free(host);
  return !local || serverAnswers(display);
}

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
  return systemUptime() + exchangeLimit;
}

bool ensureX11(X11Connection& x11) {
  if (x11.silent) return false;
  if (stillConnected(x11)) return true;
  x11.connection.reset();
  if (!displayAnswers()) {
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
        !waitFor(xcb_get_file_descriptor(x11.connection.get()), POLLIN, deadline)) {
      break;
    }
  }
  x11.connection.reset();
  x11.silent = x11.rememberSilent;
  return nullptr;
}

}  // namespace callmonitor::platform
