#include "identity/teams_launch.h"

#include <algorithm>

#include "text/base64.h"
#include "text/json.h"
#include "text/pattern.h"
#include "text/url_components.h"

namespace callmonitor {
namespace {

constexpr std::string_view launchQueryKey = "coords";
constexpr std::string_view launchPayloadKey = "meetingUrl";
constexpr std::size_t launchPayloadLimit = 8192;  // UTF-8 bytes, before decoding

const Pattern& base64Shape() {
  static const Pattern pattern("^[A-Za-z0-9+/]*={0,2}$");
  return pattern;
}

// The URL-safe alphabet turned into the standard one. A space is a "+" that query decoding undid.
char standardDigit(char c) {
  if (c == '-' || c == ' ') return '+';
  return c == '_' ? '/' : c;
}

}  // namespace

std::optional<std::string> teamsLaunchAddress(std::string_view query) {
  const std::vector<QueryItem> items = queryItems(query);
  const auto item = std::ranges::find(items, launchQueryKey, &QueryItem::name);
  if (item == items.end() || !item->value || item->value->empty()) return std::nullopt;
  std::string payload = *item->value;
  if (payload.size() > launchPayloadLimit) return std::nullopt;

  std::transform(payload.begin(), payload.end(), payload.begin(), standardDigit);
  if (!base64Shape().foundIn(payload)) return std::nullopt;
  while (payload.size() % 4 != 0) payload += '=';
  const std::optional<std::string> json = base64Decoded(payload);
  if (!json) return std::nullopt;
  return stringMember(*json, std::string(launchPayloadKey));
}

}  // namespace callmonitor
