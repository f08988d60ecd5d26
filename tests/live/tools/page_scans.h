// What the programs that look at real pages share: finding the pages, walking them in different
// ways, and telling what came of it.
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "evidence/attributes.h"
#include "evidence/evidence.h"
#include "evidence/label_scan.h"
#include "evidence/snapshot.h"
#include "evidence/web_areas.h"
#include "platform/linux/element_handle.h"
#include "platform/platform.h"

namespace callmonitor {

// Seconds that a walk may take where a slow machine must not change what it finds.
inline constexpr double withoutHurry = 60;

// The application's windows, once its pages have been made readable.
[[nodiscard]] inline std::vector<Element> windowsOf(std::int32_t pid) {
  const Element application = platform::applicationElement(pid, messageTimeout);
  (void)platform::setAttribute(application, attributes::enhancedUserInterface, true);
  return elementsIn(platform::readAttribute(application, attributes::windows));
}

// The roots of the pages that the application shows.
[[nodiscard]] inline std::vector<Element> pagesOf(std::int32_t pid) {
  std::vector<Element> pages;
  for (const Element& window : windowsOf(pid)) {
    for (const Element& page : webAreas(window, platform::systemUptime() + withoutHurry).roots) {
      pages.push_back(page);
    }
  }
  return pages;
}

// The scan of a page through any reader of attributes, for at most `seconds`. `took` is told of
// each element and of what was read of it.
template <class Read, class Took>
[[nodiscard]] Evidence scanPage(const Element& root, double seconds, Read read, Took took) {
  const double deadline = platform::systemUptime() + seconds;
  std::set<std::string> failures;
  Evidence evidence = scanLabels(
      root, /*browser=*/true, /*nativeZoomWindow=*/false, labelScanBudget,
      [&] { return platform::systemUptime() < deadline; },
      [&](const Element& element) {
        LabelSnapshot<Element> result = readLabelSnapshot(
            element, false, false, element == root, [](const std::string&) {}, read);
        for (const std::string& failure : result.failures) {
          if (failures.size() < failureLimit) failures.insert(failure);
        }
        if (result.snapshot) took(element, *result.snapshot);
        return std::move(result.snapshot);
      });
  evidence.failedAttributes.assign(failures.begin(), failures.end());
  return evidence;
}

[[nodiscard]] inline const std::string& pathOf(const Element& element) {
  return element.reference->object.path;
}

[[nodiscard]] inline bool sameEvidence(const Evidence& left, const Evidence& right) {
  return left.controls == right.controls && left.notices == right.notices &&
         left.nativeZoomTile == right.nativeZoomTile && left.complete == right.complete &&
         left.nodes == right.nodes && left.failedNodes == right.failedNodes &&
         left.failedAttributes == right.failedAttributes &&
         left.failedControlHints == right.failedControlHints && left.truncated == right.truncated &&
         left.deadline == right.deadline;
}

}  // namespace callmonitor
