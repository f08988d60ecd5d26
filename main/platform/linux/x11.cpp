// All requests of one question are sent before the first reply is read, so that a list of windows
// costs two round trips and not ten per window.
#include "platform/linux/x11.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/linux/utf8.h"
#include "platform/linux/window_owner.h"
#include "platform/linux/x11_connection.h"

namespace callmonitor::platform {
namespace {

// The longest property that is read, in 32-bit units: 4096 windows, or a name of 16 KiB.
constexpr std::uint32_t longestProperty = 4096;
constexpr std::uint32_t iconicState = 3;

using PropertyReply = X11Reply<xcb_get_property_reply_t>;

xcb_get_property_cookie_t askProperty(X11Connection& x11, xcb_window_t window,
                                      xcb_atom_t property) {
  return xcb_get_property(x11.connection.get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                          longestProperty);
}

PropertyReply awaitProperty(X11Connection& x11, xcb_get_property_cookie_t cookie, double deadline) {
  return awaitX11<xcb_get_property_reply_t>(x11, cookie, deadline);
}

// The property as 32-bit values; empty when it is missing or of another format.
std::vector<std::uint32_t> values(const PropertyReply& reply) {
  if (!reply || reply->format != 32) return {};
  std::vector<std::uint32_t> list(reply->value_len);
  if (!list.empty()) {
    std::memcpy(list.data(), xcb_get_property_value(reply.get()), list.size() * 4);
  }
  return list;
}

bool holds(const std::vector<std::uint32_t>& list, xcb_atom_t value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

std::optional<std::string> nameText(const X11Connection& x11, const PropertyReply& modern,
                                    const PropertyReply& old) {
  for (const PropertyReply* reply : {&modern, &old}) {
    if (*reply == nullptr || (*reply)->format != 8 || (*reply)->value_len == 0) continue;
    const std::string_view bytes(static_cast<const char*>(xcb_get_property_value(reply->get())),
                                 (*reply)->value_len);
    const bool utf8 = (*reply)->type == atom(x11, Atom::utf8String);
    return withoutDirectionMarks(utf8 ? repairedUtf8(bytes) : utf8FromLatin1(bytes));
  }
  return std::nullopt;
}

// As it is now: it may be changed while the machine runs.
std::string hostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::optional<std::int32_t> ownerOf(const PropertyReply& pid, const PropertyReply& machine) {
  const auto list = values(pid);
  if (list.empty()) return std::nullopt;
  std::optional<std::string_view> name;
  if (machine && machine->format == 8 && machine->value_len > 0) {
    name.emplace(static_cast<const char*>(xcb_get_property_value(machine.get())),
                 machine->value_len);
    // Some programs write the text with its terminator.
    name = name->substr(0, name->find('\0'));
  }
  return ownerHere(list[0], name, hostName());
}

// What is asked about one window; all of it is on its way at once.
struct WindowQuestions {
  xcb_window_t window = XCB_NONE;
  xcb_get_property_cookie_t name{}, oldName{}, pid{}, machine{}, state{}, type{}, wmState{};
  xcb_get_window_attributes_cookie_t attributes{};
  xcb_get_geometry_cookie_t geometry{};
  xcb_translate_coordinates_cookie_t origin{};
};

WindowQuestions askWindow(X11Connection& x11, xcb_window_t window) {
  WindowQuestions asked;
  asked.window = window;
  asked.name = askProperty(x11, window, atom(x11, Atom::name));
  asked.oldName = askProperty(x11, window, XCB_ATOM_WM_NAME);
  asked.pid = askProperty(x11, window, atom(x11, Atom::pid));
  asked.machine = askProperty(x11, window, XCB_ATOM_WM_CLIENT_MACHINE);
  asked.state = askProperty(x11, window, atom(x11, Atom::state));
  asked.type = askProperty(x11, window, atom(x11, Atom::type));
  asked.wmState = askProperty(x11, window, atom(x11, Atom::wmState));
  asked.attributes = xcb_get_window_attributes(x11.connection.get(), window);
  asked.geometry = xcb_get_geometry(x11.connection.get(), window);
  asked.origin = xcb_translate_coordinates(x11.connection.get(), window, x11.root, 0, 0);
  return asked;
}

// A window without a type is a normal one, by the window managers' convention.
bool normalType(const X11Connection& x11, const PropertyReply& type) {
  const auto list = values(type);
  return list.empty() || holds(list, atom(x11, Atom::typeNormal)) ||
         holds(list, atom(x11, Atom::typeDialog)) || holds(list, atom(x11, Atom::typeUtility));
}

// Absent when the window has gone in the meantime.
std::optional<ClientWindow> awaitWindow(X11Connection& x11, const WindowQuestions& asked,
                                        double deadline) {
  const auto name = awaitProperty(x11, asked.name, deadline);
  const auto oldName = awaitProperty(x11, asked.oldName, deadline);
  const auto pid = awaitProperty(x11, asked.pid, deadline);
  const auto machine = awaitProperty(x11, asked.machine, deadline);
  const auto windowState = values(awaitProperty(x11, asked.state, deadline));
  const auto type = awaitProperty(x11, asked.type, deadline);
  const auto wmState = values(awaitProperty(x11, asked.wmState, deadline));
  const auto attributes =
      awaitX11<xcb_get_window_attributes_reply_t>(x11, asked.attributes, deadline);
  const auto geometry = awaitX11<xcb_get_geometry_reply_t>(x11, asked.geometry, deadline);
  const auto origin = awaitX11<xcb_translate_coordinates_reply_t>(x11, asked.origin, deadline);
  if (!attributes) return std::nullopt;

  ClientWindow window;
  window.id = asked.window;
  window.pid = ownerOf(pid, machine);
  window.name = nameText(x11, name, oldName);
  window.normal = normalType(x11, type);
  const bool minimised = holds(windowState, atom(x11, Atom::stateHidden)) ||
                         (!wmState.empty() && wmState[0] == iconicState);
  window.onScreen = attributes->map_state == XCB_MAP_STATE_VIEWABLE && !minimised;
  if (geometry && origin) {
    window.extents = Extents{origin->dst_x, origin->dst_y, geometry->width, geometry->height};
  }
  return window;
}

}  // namespace

std::shared_ptr<X11Connection> makeX11Connection() {
  return std::make_shared<X11Connection>();
}

bool x11Session() {
  const char* type = std::getenv("XDG_SESSION_TYPE");
  const std::string_view named = type != nullptr ? type : "";
  if (named == "x11" || named == "wayland") return named == "x11";
  // A session that was started from a console does not say; its compositor's socket does.
  const char* wayland = std::getenv("WAYLAND_DISPLAY");
  return wayland == nullptr || *wayland == '\0';
}

std::optional<std::vector<ClientWindow>> clientWindows(X11Connection& x11) {
  const HeldPipeSignal held;
  if (!x11Session() || !ensureX11(x11)) return std::nullopt;
  const double deadline = x11Deadline();
  const auto list =
      awaitProperty(x11, askProperty(x11, x11.root, atom(x11, Atom::clientList)), deadline);
  if (!list || list->format != 32) return std::nullopt;

  std::vector<WindowQuestions> asked;
  for (const std::uint32_t window : values(list)) asked.push_back(askWindow(x11, window));
  std::vector<ClientWindow> windows;
  for (const WindowQuestions& each : asked) {
    if (auto window = awaitWindow(x11, each, deadline)) windows.push_back(std::move(*window));
    if (!x11.connection) return std::nullopt;  // half a list would make windows look closed
  }
  return windows;
}

std::optional<std::uint32_t> activeWindow(X11Connection& x11) {
  const HeldPipeSignal held;
  if (!x11Session() || !ensureX11(x11)) return std::nullopt;
  const auto list = values(
      awaitProperty(x11, askProperty(x11, x11.root, atom(x11, Atom::activeWindow)), x11Deadline()));
  if (list.empty() || list[0] == XCB_NONE) return std::nullopt;
  return list[0];
}

std::optional<std::int32_t> windowProcess(X11Connection& x11, std::uint32_t window) {
  const HeldPipeSignal held;
  if (!x11Session() || !ensureX11(x11)) return std::nullopt;
  const double deadline = x11Deadline();
  const auto pid = askProperty(x11, window, atom(x11, Atom::pid));
  const auto machine = askProperty(x11, window, XCB_ATOM_WM_CLIENT_MACHINE);
  const auto pidReply = awaitProperty(x11, pid, deadline);
  const auto machineReply = awaitProperty(x11, machine, deadline);
  return ownerOf(pidReply, machineReply);
}

std::optional<std::string> windowName(X11Connection& x11, std::uint32_t window) {
  const HeldPipeSignal held;
  if (!x11Session() || !ensureX11(x11)) return std::nullopt;
  const double deadline = x11Deadline();
  const auto modern = askProperty(x11, window, atom(x11, Atom::name));
  const auto old = askProperty(x11, window, XCB_ATOM_WM_NAME);
  const auto modernReply = awaitProperty(x11, modern, deadline);
  const auto oldReply = awaitProperty(x11, old, deadline);
  return nameText(x11, modernReply, oldReply);
}

}  // namespace callmonitor::platform
