#include "text/url_components.h"

#include <uriparser/Uri.h>

#include <algorithm>

#include "text/unicode.h"

namespace callmonitor {
namespace {

std::optional<std::string> rangeText(const UriTextRangeA& range) {
  if (range.first == nullptr || range.afterLast == nullptr) return std::nullopt;
  return std::string(range.first, range.afterLast);
}

// The parser keeps a path as its segments; this puts the path back together as it was written.
std::string pathOf(const UriUriA& uri) {
  std::string path;
  const bool rooted = uri.absolutePath == URI_TRUE || uri.hostText.first != nullptr;
  for (const UriPathSegmentA* segment = uri.pathHead; segment != nullptr; segment = segment->next) {
    if (rooted || segment != uri.pathHead) path += '/';
    path += rangeText(segment->text).value_or("");
  }
  if (path.empty() && uri.absolutePath == URI_TRUE) path += '/';
  return path;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::optional<std::string> queryDecoded(std::string_view text) {
  std::string spaced(text);
  std::replace(spaced.begin(), spaced.end(), '+', ' ');
  return percentDecoded(spaced);
}

}  // namespace

std::optional<UrlComponents> urlComponents(std::string_view raw) {
  UriUriA uri{};
  const char* errorPosition = nullptr;
  if (uriParseSingleUriExA(&uri, raw.data(), raw.data() + raw.size(), &errorPosition) !=
      URI_SUCCESS) {
    return std::nullopt;
  }
  UrlComponents components;
  components.scheme = rangeText(uri.scheme);
  components.userInfo = rangeText(uri.userInfo);
  components.host = rangeText(uri.hostText);
  if (uri.hostData.ip6 != nullptr || uri.hostData.ipFuture.first != nullptr) {
    // The brackets tell "[v1.zoom.us]", an address of a kind yet to come, from a name.
    components.host = "[" + components.host.value_or("") + "]";
  }
  components.port = rangeText(uri.portText);
  if (components.port == "") components.port.reset();
  components.path = pathOf(uri);
  components.query = rangeText(uri.query);
  components.fragment = rangeText(uri.fragment);
  uriFreeUriMembersA(&uri);
  return components;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return std::nullopt;
    const int high = hexDigit(text[i + 1]);
    const int low = hexDigit(text[i + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    decoded += static_cast<char>(static_cast<unsigned char>(high * 16 + low));
    i += 2;
  }
  if (!validUtf8(decoded)) return std::nullopt;
  return decoded;
}

std::vector<QueryItem> queryItems(std::string_view query) {
  std::vector<QueryItem> items;
  while (true) {
    const std::string_view item = query.substr(0, query.find('&'));
    const std::size_t equals = item.find('=');
    QueryItem decoded;
    decoded.name = queryDecoded(item.substr(0, equals)).value_or("");
    if (equals != std::string_view::npos) decoded.value = queryDecoded(item.substr(equals + 1));
    items.push_back(decoded);
    if (item.size() == query.size()) return items;
    query.remove_prefix(item.size() + 1);
  }
}

}  // namespace callmonitor
