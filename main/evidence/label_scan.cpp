#include "evidence/label_scan.h"

#include <algorithm>
#include <array>

namespace callmonitor {
namespace {

constexpr std::array<std::string_view, 3> controlRoles{buttonRole, "AXCheckBox", "AXMenuButton"};

}  // namespace

void gatherControls(const std::string& role, const std::string& title,
                    const std::string& description, Evidence& evidence) {
  if (std::ranges::count(controlRoles, role) == 0) return;
  evidence.controls.push_back(title);
  evidence.controls.push_back(description);
}

void gatherNotice(const std::string& role, const std::string& text, bool noticeContext,
                  Evidence& evidence) {
  if (text.empty() || !shorterThan(text, noticeLimit)) return;
  if (!noticeContext) {
    const std::string plain = normalized(text);
    const bool postCall = role == staticTextRole && teamsPostCallText(plain);
    if (!postCall && !matches(plain, reconnectingPattern)) return;
  }
  evidence.notices.push_back(text);
}

bool zoomTile(const std::string& roleDescription, const std::string& label) {
  return normalized(roleDescription) == "video render" &&
         matches(normalized(label), zoomTilePattern);
}

bool startsNoticeContainer(std::string_view role, std::string_view subrole, bool browser) {
  return role == "AXHeading" || subrole == "AXApplicationAlert" ||
         (!browser && subrole == "AXDialog");
}

bool nativeZoomMeetingTitle(std::string_view title) {
  return normalized(title) == "zoom meeting";
}

Evidence labels(const Element& root, bool browser, bool nativeZoomWindow,
                bool nativeZoomPreviewRecovery, double pollDeadline) {
  const double deadline = std::min(platform::systemUptime() + labelScanSeconds, pollDeadline);
  platform::expectScan(root, deadline, labelScanBudget);
  return scanAttributes(
      root, {browser, nativeZoomWindow, nativeZoomPreviewRecovery}, labelScanBudget,
      [deadline] { return platform::systemUptime() < deadline; },
      [deadline](const Element& element, std::string_view name) {
        return readBefore(deadline, element, name);
      });
}

}  // namespace callmonitor
