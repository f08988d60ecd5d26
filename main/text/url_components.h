// Web addresses taken apart by a strict RFC 3986 parser.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor {

// The parts of an address as written, nothing decoded or lower-cased. An absent part is kept apart
// from an empty one ("https://@host" has an empty user information).
struct UrlComponents {
  std::optional<std::string> scheme;
  std::optional<std::string> userInfo;  // user, or user ":" password
  std::optional<std::string> host;      // an address literal keeps its brackets
  std::optional<std::string> port;      // digits as written; an empty port is absent
  std::string path;
  std::optional<std::string> query;
  std::optional<std::string> fragment;
};

// Absent when `raw` is not an RFC 3986 URI reference.
[[nodiscard]] std::optional<UrlComponents> urlComponents(std::string_view raw);

// The text with every "%" escape decoded. Absent when an escape is malformed or the result is not
// UTF-8. "%00" is a character like any other.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

// One item of a query, name and value decoded ("+" is a space, then "%" escapes). The value is
// absent when the item has no "=" or does not decode; a name that does not decode is empty.
struct QueryItem {
  std::string name;
  std::optional<std::string> value;
};

// The items of a query in order, parted by "&", each parted by its first "=".
[[nodiscard]] std::vector<QueryItem> queryItems(std::string_view query);

}  // namespace callmonitor
