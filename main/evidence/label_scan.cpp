#include "evidence/label_scan.h"

#include <algorithm>
#include <array>
#include <set>

namespace callmonitor {
namespace {

constexpr std::array<std::string_view, 3> controlRoles{buttonRole, "AXCheckBox", "AXMenuButton"};

// One slow application must not keep the scan past its deadline, not even within one element.
platform::Reading readBefore(double deadline, const Element& element, std::string_view name) {
  if (platform::systemUptime() >= deadline) return {platform::code::cannotComplete, {}};
  return platform::readAttribute(element, name);
}

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
  platform::expectScan(root, deadline);
  std::set<std::string> failures;
  std::set<std::string> hints;
  const auto read = [&](const Element& element) {
    LabelSnapshot<Element> result = readLabelSnapshot(
        element, !browser && nativeZoomWindow, !browser && nativeZoomPreviewRecovery,
        browser && element == root, [&](const std::string& hint) { hints.insert(hint); },
        [&](const Element& node, std::string_view name) {
          return readBefore(deadline, node, name);
        });
    for (const std::string& failure : result.failures) {
      if (failures.size() < failureLimit) failures.insert(failure);
    }
    return std::move(result.snapshot);
  };
  Evidence evidence = scanLabels(
      root, browser, nativeZoomWindow, labelScanBudget,
      [&] { return platform::systemUptime() < deadline; }, read);
  evidence.failedAttributes.assign(failures.begin(), failures.end());
  evidence.failedControlHints.assign(hints.begin(), hints.end());
  return evidence;
}

}  // namespace callmonitor
