#include "identity/meeting_address.h"

#include <algorithm>

#include "text/unicode.h"

namespace callmonitor {
namespace {

constexpr std::string_view securePort = "443";

bool inDomain(std::string_view host, std::string_view domain) {
  return host == domain ||
         (host.ends_with(domain) && host.substr(0, host.size() - domain.size()).ends_with('.'));
}

// Compares a port as a number of any length: a number that merely overflows to 443 is another.
bool isSecurePort(std::string_view digits) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits == securePort;
}

}  // namespace

bool plainAuthority(const UrlComponents& url) {
  return !url.userInfo && (!url.port || isSecurePort(*url.port));
}

std::optional<std::string> secureHost(const UrlComponents& url) {
  if (!url.scheme || lowerCased(*url.scheme) != "https") return std::nullopt;
  if (!plainAuthority(url) || !url.host) return std::nullopt;
  return lowerCased(*url.host);
}

std::optional<std::string> providerOfHost(std::string_view host) {
  if (host == MeetHost) return "meet";
  if (inDomain(host, ZoomWebDomain) || inDomain(host, ZoomAltDomain)) return "zoom";
  if (std::ranges::count(TeamsHostList, host) > 0) {
    return "teams";
  }
  return std::nullopt;
}

}  // namespace callmonitor
