// The file by which PulseAudio's clients prove to be the user's.
#pragma once

#include <string>

namespace callmonitor::platform {

// Environment variables that say where the cookie may be, each null where it is not set.
struct CookiePlaces {
  const char* cookie = nullptr;         // PULSE_COOKIE, a path
  const char* configuration = nullptr;  // XDG_CONFIG_HOME
  const char* home = nullptr;           // HOME
};

// The cookie to take, in the library's own order. The library makes a new one where it finds none;
// a monitor leaves no files behind, so in that case this is an endless file of zeros: a server on
// this machine knows its user by the socket, and none would accept a cookie made up just now.
[[nodiscard]] std::string pulseCookieFile(const CookiePlaces& places);

}  // namespace callmonitor::platform
