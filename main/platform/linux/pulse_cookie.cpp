#include "platform/linux/pulse_cookie.h"

#include <sys/stat.h>

#include <vector>

namespace callmonitor::platform {
namespace {

// Bytes of a cookie; the library writes a shorter one anew.
constexpr off_t cookieLength = 256;

bool isSet(const char* value) {
  return value != nullptr && *value != '\0';
}

bool isCookie(const std::string& path) {
  struct stat status {};
  return path.starts_with('/') && stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_size >= cookieLength;
}

}  // namespace

std::string pulseCookieFile(const CookiePlaces& places) {
  std::vector<std::string> paths;
  if (isSet(places.cookie)) paths.emplace_back(places.cookie);
  if (isSet(places.configuration)) {
    paths.push_back(std::string(places.configuration) + "/pulse/cookie");
  } else if (isSet(places.home)) {
    paths.push_back(std::string(places.home) + "/.config/pulse/cookie");
  }
  if (isSet(places.home)) paths.push_back(std::string(places.home) + "/.pulse-cookie");
  for (const std::string& path : paths) {
    if (isCookie(path)) return path;
  }
  return "/dev/zero";
}

}  // namespace callmonitor::platform
