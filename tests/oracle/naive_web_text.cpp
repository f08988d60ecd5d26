#include "oracle/naive_web_text.h"

#include "oracle/expression.h"
#include "oracle/naive_text.h"

namespace callmonitor::oracle {
namespace {

const std::string plainOrEscape = "[A-Za-z0-9._~!$&'()*+,;=-]|%[0-9A-Fa-f]{2}";

// The expressions are over bytes: addresses are ASCII, and what is not must not match.
bool validHost(const std::string& host) {
  static const Expression name = overBytes("(?:" + plainOrEscape + ")*");
  static const Expression future =
      overBytes(R"(\[[vV][0-9A-Fa-f]+\.[A-Za-z0-9._~!$&'()*+,;=:-]+\])");
  static const std::string h16 = "[0-9A-Fa-f]{1,4}";
  static const std::string byte = "(?:[0-9]|[1-9][0-9]|1[0-9]{2}|2[0-4][0-9]|25[0-5])";
  static const std::string last = "(?:" + h16 + ":" + h16 + "|" + byte + "(?:\\." + byte + "){3})";
  static const Expression six = overBytes(
      "\\[(?:(?:" + h16 + ":){6}" + last + "|::(?:" + h16 + ":){5}" + last + "|(?:" + h16 +
      ")?::(?:" + h16 + ":){4}" + last + "|(?:(?:" + h16 + ":){0,1}" + h16 + ")?::(?:" + h16 +
      ":){3}" + last + "|(?:(?:" + h16 + ":){0,2}" + h16 + ")?::(?:" + h16 + ":){2}" + last +
      "|(?:(?:" + h16 + ":){0,3}" + h16 + ")?::" + h16 + ":" + last + "|(?:(?:" + h16 + ":){0,4}" +
      h16 + ")?::" + last + "|(?:(?:" + h16 + ":){0,5}" + h16 + ")?::" + h16 + "|(?:(?:" + h16 +
      ":){0,6}" + h16 + ")?::)\\]");
  return matchesWhole(host, name) || matchesWhole(host, future) || matchesWhole(host, six);
}

// Parts the authority at its "@" and its last ":"; false when a part is not what it may be.
bool readAuthority(std::string authority, Address& address) {
  static const Expression user = overBytes("(?:" + plainOrEscape + "|:)*");
  static const Expression digits = overBytes("[0-9]*");
  if (const std::size_t at = authority.find('@'); at != std::string::npos) {
    address.user = authority.substr(0, at);
    authority = authority.substr(at + 1);
    if (!matchesWhole(*address.user, user)) return false;
  }
  const std::size_t colon = authority.rfind(':');
  const std::size_t bracket = authority.rfind(']');
  if (colon != std::string::npos && (bracket == std::string::npos || colon > bracket)) {
    address.port = authority.substr(colon + 1);
    authority = authority.substr(0, colon);
    if (!matchesWhole(*address.port, digits)) return false;
  }
  address.host = authority;
  return validHost(authority);
}

// JSON read from the front of a text. Every function takes what it reads off the text and says
// whether that was there.
struct Json {
  std::string rest;
  std::string name;                   // the member that is looked for, at the top alone
  std::optional<std::string> member;  // its text

  bool take(char c) {
    if (rest.empty() || rest.front() != c) return false;
    rest.erase(0, 1);
    return true;
  }

  void skipSpace() { rest.erase(0, rest.find_first_not_of(" \t\r\n")); }

  bool escape(std::vector<char32_t>& text) {
    static const Expression unit = overBytes("u([0-9A-Fa-f]{4})");
    static const Expression low = overBytes("\\\\u([dD][c-fC-F][0-9A-Fa-f]{2})");
    if (const auto first = matchAtFront(rest, unit)) {
      char32_t point = static_cast<char32_t>(std::stoul((*first)[1], nullptr, 16));
      if (point >= 0xDC00 && point <= 0xDFFF) return false;
      rest.erase(0, first->front().size());
      if (point >= 0xD800 && point <= 0xDBFF) {
        const auto second = matchAtFront(rest, low);
        if (!second) return false;
        rest.erase(0, second->front().size());
        point = 0x10000 + ((point - 0xD800) << 10) +
                (static_cast<char32_t>(std::stoul((*second)[1], nullptr, 16)) - 0xDC00);
      }
      text.push_back(point);
      return true;
    }
    const std::string codes = "\"\\/bfnrt";
    const std::string means = "\"\\/\b\f\n\r\t";
    const std::size_t code = rest.empty() ? std::string::npos : codes.find(rest.front());
    if (code == std::string::npos) return false;
    text.push_back(static_cast<unsigned char>(means[code]));
    rest.erase(0, 1);
    return true;
  }

  std::optional<std::string> text() {
    if (!take('"')) return std::nullopt;
    std::string read;
    while (!rest.empty()) {
      if (take('"')) return codePoints(read) ? std::optional(read) : std::nullopt;
      if (take('\\')) {
        std::vector<char32_t> point;
        if (!escape(point)) return std::nullopt;
        read += utf8(point);
        continue;
      }
      if (static_cast<unsigned char>(rest.front()) < 0x20) return std::nullopt;
      read += rest.front();
      rest.erase(0, 1);
    }
    return std::nullopt;
  }

  bool members(int depth) {
    skipSpace();
    if (take('}')) return true;
    while (true) {
      skipSpace();
      const std::optional<std::string> key = text();
      skipSpace();
      if (!key || !take(':')) return false;
      skipSpace();
      const std::string before = rest;
      if (!value(depth + 1)) return false;
      if (depth == 1 && *key == name) {
        Json again{before, {}, {}};
        member = again.text();
      }
      skipSpace();
      if (take('}')) return true;
      if (!take(',')) return false;
    }
  }

  bool items(int depth) {
    skipSpace();
    if (take(']')) return true;
    while (true) {
      skipSpace();
      if (!value(depth + 1)) return false;
      skipSpace();
      if (take(']')) return true;
      if (!take(',')) return false;
    }
  }

  bool value(int depth) {
    static const Expression plain =
        overBytes(R"(true|false|null|-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][+-]?[0-9]+)?)");
    if (!rest.empty() && rest.front() == '"') return text().has_value();
    if (take('{')) return members(depth);
    if (take('[')) return items(depth);
    const auto taken = matchAtFront(rest, plain);
    if (!taken) return false;
    rest.erase(0, taken->front().size());
    return true;
  }
};

// Cuts a text at a character and hands out what stood behind it.
std::optional<std::string> cutOff(std::string& text, char at) {
  const std::size_t place = text.find(at);
  if (place == std::string::npos) return std::nullopt;
  std::string behind = text.substr(place + 1);
  text.resize(place);
  return behind;
}

}  // namespace

std::optional<Address> addressOf(const std::string& raw) {
  static const Expression scheme = overBytes("[A-Za-z][A-Za-z0-9+.-]*");
  static const Expression path = overBytes("(?:" + plainOrEscape + "|[:@/])*");
  static const Expression tail = overBytes("(?:" + plainOrEscape + "|[:@/?])*");
  std::optional<std::string> authority;
  Address address;
  std::string rest = raw;
  address.fragment = cutOff(rest, '#');
  address.query = cutOff(rest, '?');
  if (const std::size_t colon = rest.find(':'); colon < rest.find('/') && colon > 0) {
    address.scheme = rest.substr(0, colon);
    rest = rest.substr(colon + 1);
  }
  if (rest.substr(0, 2) == "//") {
    authority = rest.substr(2, rest.find('/', 2) - 2);
    rest = rest.substr(2 + authority->size());
  }
  address.path = rest;
  if (address.scheme && !matchesWhole(*address.scheme, scheme)) return std::nullopt;
  if (authority && !readAuthority(*authority, address)) return std::nullopt;
  if (!matchesWhole(address.path, path)) return std::nullopt;
  if (address.query && !matchesWhole(*address.query, tail)) return std::nullopt;
  if (address.fragment && !matchesWhole(*address.fragment, tail)) return std::nullopt;
  // Without a scheme a colon in the first segment would make one of what stands before it.
  const std::string first = address.path.substr(0, address.path.find('/'));
  if (!address.scheme && !authority && first.find(':') != std::string::npos) return std::nullopt;
  return address;
}

std::optional<std::string> unescaped(const std::string& text) {
  const std::string digits = "0123456789abcdefABCDEF";
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    const std::string hex = text.substr(i + 1, 2);
    if (hex.size() != 2 || hex.find_first_not_of(digits) != std::string::npos) return std::nullopt;
    result += static_cast<char>(std::stoi(hex, nullptr, 16));
    i += 2;
  }
  if (!codePoints(result)) return std::nullopt;
  return result;
}

std::optional<std::string> bytesOfBase64(const std::string& text) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  static const Expression shape =
      overBytes("(?:[A-Za-z0-9+/]{4})*(?:[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?");
  if (!matchesWhole(text, shape)) return std::nullopt;
  std::string bits;
  for (const char c : text.substr(0, text.find('='))) {
    for (std::size_t bit = 32; bit > 0; bit /= 2) {
      bits += (alphabet.find(c) & bit) != 0 ? '1' : '0';
    }
  }
  std::string bytes;
  for (std::size_t i = 0; i + 8 <= bits.size(); i += 8) {
    bytes += static_cast<char>(std::stoi(bits.substr(i, 8), nullptr, 2));
  }
  return bytes;
}

std::optional<std::string> textInObject(const std::string& json, const std::string& name) {
  Json reader{json, name, {}};
  reader.skipSpace();
  if (reader.rest.empty() || reader.rest.front() != '{' || !reader.value(1)) return std::nullopt;
  reader.skipSpace();
  return reader.rest.empty() ? reader.member : std::nullopt;
}

}  // namespace callmonitor::oracle
