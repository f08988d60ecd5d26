#include "oracle/naive_addresses.h"

#include <vector>

#include "oracle/naive_text.h"
#include "oracle/naive_web_text.h"

namespace callmonitor::oracle {
namespace {

const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string digits = "0123456789";

std::string small(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return text;
}

bool begins(const std::string& text, const std::string& with) {
  return text.substr(0, with.size()) == with;
}

bool ends(const std::string& text, const std::string& with) {
  return text.size() >= with.size() && text.substr(text.size() - with.size()) == with;
}

bool only(const std::string& text, const std::string& allowed) {
  return text.find_first_not_of(allowed) == std::string::npos;
}

bool plain(const Address& address) {
  if (address.user) return false;
  if (!address.port || address.port->empty()) return true;
  std::string port = *address.port;
  while (!port.empty() && port.front() == '0') port.erase(0, 1);
  return port == "443";
}

// The small host of an address that may name a meeting.
std::optional<std::string> hostOf(const Address& address) {
  if (!address.scheme || small(*address.scheme) != "https") return std::nullopt;
  if (!plain(address) || !address.host) return std::nullopt;
  return small(*address.host);
}

bool teamsHost(const std::string& host) {
  return host == "teams.microsoft.com" || host == "teams.live.com" ||
         host == "teams.cloud.microsoft";
}

std::string providerOf(const std::string& host) {
  if (host == "meet.google.com") return "meet";
  for (const std::string domain : {"zoom.us", "zoom.com"}) {
    if (host == domain || ends(host, "." + domain)) return "zoom";
  }
  return teamsHost(host) ? "teams" : "";
}

// Where a meeting's id may end: at the end of the path, before one line terminator that ends the
// path, or before a slash.
bool endsHere(const std::string& rest) {
  if (rest.empty() || rest.front() == '/') return true;
  for (const std::string terminator :
       {"\n", "\v", "\f", "\r", "\r\n", "\u0085", "\u2028", "\u2029"}) {
    if (rest == terminator) return true;
  }
  return false;
}

// The longest start of a text that is made of these characters alone.
std::string startOf(const std::string& text, const std::string& characters) {
  return text.substr(0, text.find_first_not_of(characters));
}

// What stands behind a prefix of the path; absent when the path begins otherwise.
std::optional<std::string> behind(const std::string& path, const std::string& prefix) {
  if (!begins(path, prefix)) return std::nullopt;
  return path.substr(prefix.size());
}

std::optional<std::string> meetId(const std::string& path) {
  for (const std::string prefix : {"/meet/", "/"}) {
    const std::optional<std::string> rest = behind(path, prefix);
    if (!rest) continue;
    const std::string id = rest->substr(0, 12);
    if (id.size() == 12 && id[3] == '-' && id[8] == '-' && only(id.substr(0, 3), letters) &&
        only(id.substr(4, 4), letters) && only(id.substr(9), letters) &&
        endsHere(rest->substr(12))) {
      return small(id);
    }
  }
  return std::nullopt;
}

std::optional<std::string> zoomId(const std::string& path) {
  for (const std::string prefix : {"/j/", "/wc/", "/wc/join/"}) {
    const std::optional<std::string> rest = behind(path, prefix);
    if (!rest) continue;
    const std::string id = startOf(*rest, digits);
    if (id.size() >= 6 && id.size() <= 15 && endsHere(rest->substr(id.size()))) return id;
  }
  return std::nullopt;
}

std::optional<std::string> teamsId(const std::string& path) {
  if (const auto rest = behind(path, "/l/meetup-join/")) {
    const std::string id = rest->substr(0, rest->find('/'));
    if (!id.empty()) return id;
  }
  for (const std::string prefix : {"/meet/", "/v2/meet/"}) {
    const std::optional<std::string> rest = behind(path, prefix);
    if (!rest) continue;
    const std::string id = startOf(*rest, letters + digits + "_-");
    if (!id.empty() && endsHere(rest->substr(id.size()))) return id;
  }
  return std::nullopt;
}

std::string replaced(const std::string& text, char from, char to) {
  std::string result;
  for (const char c : text) result += c == from ? to : c;
  return result;
}

std::optional<std::string> queryUnescaped(const std::string& text) {
  return unescaped(replaced(text, '+', ' '));
}

// The value of the first item of that name; absent too when the item has none.
std::optional<std::string> queryValue(std::string query, const std::string& name) {
  query += "&";
  while (!query.empty()) {
    const std::string item = query.substr(0, query.find('&'));
    query = query.substr(item.size() + 1);
    const std::size_t equals = item.find('=');
    if (queryUnescaped(item.substr(0, equals)) != name) continue;
    if (equals == std::string::npos) return std::nullopt;
    return queryUnescaped(item.substr(equals + 1));
  }
  return std::nullopt;
}

Key launched(const Address& address) {
  if (!address.query) return std::nullopt;
  const std::optional<std::string> value = queryValue(*address.query, "coords");
  if (!value || value->empty() || value->size() > 8192) return std::nullopt;
  std::string base64 = replaced(replaced(replaced(*value, '-', '+'), '_', '/'), ' ', '+');
  if (ends(base64, "===")) return std::nullopt;  // the shape allows two
  while (base64.size() % 4 != 0) base64 += "=";
  const std::optional<std::string> json = bytesOfBase64(base64);
  if (!json) return std::nullopt;
  const std::optional<std::string> inner = textInObject(*json, "meetingUrl");
  if (!inner) return std::nullopt;
  const Key key = conference(*inner, false);
  return key && begins(*key, "teams:") ? key : std::nullopt;
}

std::size_t utf16Units(const std::string& text) {
  std::size_t units = 0;
  for (const char32_t c : characters(text)) units += c > 0xFFFF ? 2 : 1;
  return units;
}

}  // namespace

Key conference(const std::string& raw, bool allowLaunch) {
  if (raw.size() > 16384) return std::nullopt;
  const std::optional<Address> address = addressOf(raw);
  if (!address) return std::nullopt;
  const std::optional<std::string> host = hostOf(*address);
  if (!host) return std::nullopt;
  const std::string provider = providerOf(*host);
  std::optional<std::string> path = unescaped(address->path);
  if (!path || provider.empty()) return std::nullopt;

  std::optional<std::string> id;
  if (provider == "meet") id = meetId(*path);
  if (provider == "zoom") id = zoomId(*path);
  if (provider == "teams") {
    if (*path == "/light-meetings/launch") {
      return allowLaunch ? launched(*address) : std::nullopt;
    }
    if (*host == "teams.live.com" && (*path == "/v2" || *path == "/v2/") && address->fragment) {
      const std::optional<std::string> fragment = unescaped(*address->fragment);
      if (fragment && begins(*fragment, "/meet/")) path = fragment->substr(0, fragment->find('?'));
    }
    id = teamsId(*path);
  }
  if (!id || id->empty() || utf16Units(*id) > 512) return std::nullopt;
  return provider + ":" + *id;
}

Key clientHost(const std::string& raw) {
  if (Key key = conference(raw, true)) return key;
  const std::optional<Address> address = addressOf(raw);
  if (!address) return std::nullopt;
  const std::optional<std::string> host = hostOf(*address);
  if (!host) return std::nullopt;
  const std::string provider = providerOf(*host);
  if (provider == "meet") return "meet:meet.google.com";
  if (provider == "zoom") return "zoom:zoom.us";
  if (provider == "teams") return "teams:teams.microsoft.com";
  return std::nullopt;
}

AreaIdentity webAreaIdentity(int status, const std::optional<std::string>& raw) {
  if (status != 0) return {};
  if (!raw || raw->empty()) return {};
  const std::optional<Address> address = addressOf(*raw);
  if (!address) return {};
  if (!address->scheme || address->scheme->empty()) return {};
  const std::string scheme = small(*address->scheme);
  if (scheme == "http" || scheme == "https") {
    if (!address->host || address->host->empty()) return {};
  }
  return {conference(*raw, true), true};
}

bool meetLandingPage(const std::string& raw) {
  const std::optional<Address> address = addressOf(raw);
  if (!address) return false;
  if (address->scheme != "https" || address->host != "meet.google.com") return false;
  if (!plain(*address)) return false;
  const std::optional<std::string> path = unescaped(address->path);
  return path == "/" || path == "/home" || path == "/landing" || path == "/meet/landing";
}

}  // namespace callmonitor::oracle
