#include "evidence/label_rules.h"

#include <algorithm>

#include "evidence/attributes.h"
#include "text/unicode.h"

namespace callmonitor {
namespace {

constexpr std::array<std::string_view, 6> excludedRoles{
    "AXTextArea", "AXTextField", "AXList", "AXTable", "AXOutline", "AXBlockQuote"};
constexpr std::array<std::string_view, 2> excludedSubroles{"AXApplicationLog", "AXApplicationFeed"};

}  // namespace

std::string normalized(std::string_view label) {
  return singleSpaced(lowerCased(label));
}

bool excludedContent(std::string_view role, std::string_view subrole, std::string_view label) {
  return std::ranges::count(excludedRoles, role) > 0 ||
         std::ranges::count(excludedSubroles, subrole) > 0 ||
         matches(normalized(label), chatContentPattern);
}

bool teamsPostCallText(std::string_view normalizedText) {
  return std::ranges::count(phrases::teamsPostCall, normalizedText) > 0;
}

bool teamsPostCallNotice(std::string_view label) {
  return teamsPostCallText(normalized(label));
}

bool providerNoticeLeaf(std::string_view role, std::string_view subrole, std::string_view title,
                        std::string_view description) {
  return role == staticTextRole && std::ranges::count(excludedSubroles, subrole) == 0 &&
         (teamsPostCallNotice(title) || teamsPostCallNotice(description));
}

}  // namespace callmonitor
