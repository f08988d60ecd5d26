// The bounded walk that turns a window or page into evidence.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "evidence/attributes.h"
#include "evidence/evidence.h"
#include "evidence/label_rules.h"
#include "evidence/snapshot.h"
#include "text/unicode.h"

namespace callmonitor {

inline constexpr int labelScanBudget = 1600;     // elements taken in one scan
inline constexpr double labelScanSeconds = 0.5;  // uptime seconds of one scan
inline constexpr std::size_t noticeLimit = 200;  // characters; longer texts are prose
inline constexpr std::size_t failureLimit = 16;  // distinct failures that are kept

// Adds to the evidence what one readable element that is neither hidden nor excluded shows by
// itself. `noticeContext` says that it is, or stands below, a notice container.
void gatherControls(const std::string& role, const std::string& title,
                    const std::string& description, Evidence& evidence);
void gatherNotice(const std::string& role, const std::string& text, bool noticeContext,
                  Evidence& evidence);
[[nodiscard]] bool zoomTile(const std::string& roleDescription, const std::string& label);

// Whether an element starts a notice container: a heading, an alert, or in a native client a
// dialog. In browsers a dialog is any overlay, so it proves nothing there.
[[nodiscard]] bool startsNoticeContainer(std::string_view role, std::string_view subrole,
                                         bool browser);

// Walks the tree under `root` depth first, last child first, until nothing is left, `budget`
// elements have been taken or `withinDeadline()` says that no time is left. `read(node)` gives an
// element's `AXSnapshot`, or nothing where it cannot be read: such an element costs its place in
// the budget and leaves the evidence incomplete, and the walk goes on. `withinDeadline` is asked
// once before each element and once after the walk.
template <class Node, class WithinDeadline, class Read>
[[nodiscard]] Evidence scanLabels(const Node& root, bool browser, bool nativeZoomWindow, int budget,
                                  WithinDeadline withinDeadline, Read read) {
  Evidence evidence;
  if (budget < 1) {
    evidence.truncated = true;
    evidence.complete = false;
    return evidence;
  }
  struct Entry {
    Node node;
    bool noticeContext;
  };
  std::vector<Entry> stack{{root, false}};
  while (!stack.empty() && evidence.nodes < budget) {
    if (!withinDeadline()) break;
    const Entry entry = std::move(stack.back());
    stack.pop_back();
    const bool scanRoot = browser && evidence.nodes == 0;
    ++evidence.nodes;

    const std::optional<AXSnapshot<Node>> snapshot = read(entry.node);
    if (!snapshot) {
      evidence.complete = false;
      ++evidence.failedNodes;
      continue;
    }
    if (snapshot->hidden || snapshot->excluded(scanRoot)) continue;

    if (!browser && nativeZoomWindow && zoomTile(snapshot->roleDescription, snapshot->label())) {
      evidence.nativeZoomTile = true;
    }
    if (snapshot->enabled) {
      gatherControls(snapshot->role, snapshot->title, snapshot->description, evidence);
    }
    const bool noticeContext =
        entry.noticeContext || startsNoticeContainer(snapshot->role, snapshot->subrole, browser);
    for (const std::string* text : {&snapshot->value, &snapshot->title, &snapshot->description}) {
      gatherNotice(snapshot->role, *text, noticeContext, evidence);
    }

    std::size_t kept = snapshot->children.size();
    if (kept > childCap) {
      kept = childCap;
      evidence.truncated = true;
      evidence.complete = false;
    }
    for (std::size_t i = 0; i < kept; ++i) stack.push_back({snapshot->children[i], noticeContext});
  }
  evidence.deadline = !withinDeadline();
  if (!stack.empty()) {
    evidence.complete = false;
    if (evidence.nodes >= budget) evidence.truncated = true;
  } else if (evidence.deadline) {
    evidence.complete = false;
  }
  return evidence;
}

// What of a root decides how its elements are read.
struct ScanFlags {
  bool browser = false;              // a page, of which the root itself is never excluded
  bool nativeZoomWindow = false;     // looks for participant tiles, in native clients only
  bool zoomPreviewRecovery = false;  // of the Zoom preview's "Audio" button, in native clients only
};

// The walk, with every element read through `readAttribute(node, attribute name)` and with the
// failures and hints of the reading in the evidence: sorted, distinct, the failures at most
// `failureLimit`.
template <class Node, class WithinDeadline, class ReadAttribute>
[[nodiscard]] Evidence scanAttributes(const Node& root, const ScanFlags& flags, int budget,
                                      WithinDeadline withinDeadline, ReadAttribute readAttribute) {
  std::set<std::string> failures;
  std::set<std::string> hints;
  const auto read = [&](const Node& node) {
    LabelSnapshot<Node> result = readLabelSnapshot(
        node, !flags.browser && flags.nativeZoomWindow, !flags.browser && flags.zoomPreviewRecovery,
        flags.browser && node == root, [&](const std::string& hint) { hints.insert(hint); },
        readAttribute);
    for (const std::string& failure : result.failures) {
      if (failures.size() < failureLimit) failures.insert(failure);
    }
    return std::move(result.snapshot);
  };
  Evidence evidence =
      scanLabels(root, flags.browser, flags.nativeZoomWindow, budget, withinDeadline, read);
  evidence.failedAttributes.assign(failures.begin(), failures.end());
  evidence.failedControlHints.assign(hints.begin(), hints.end());
  return evidence;
}

// The scan of a live root: `labelScanBudget` elements, half a second and no later than
// `pollDeadline` (uptime seconds). Reading stops asking the platform once the deadline has passed;
// such reads are failures with the code of an application that does not answer. `browser` scans the
// root as a page; `nativeZoomWindow` looks for participant tiles; `nativeZoomPreviewRecovery` is
// for native clients only.
[[nodiscard]] Evidence labels(const Element& root, bool browser, bool nativeZoomWindow,
                              bool nativeZoomPreviewRecovery, double pollDeadline);

// Whether a window's title is that of a meeting of the native Zoom client, as opposed to its home
// window, a webinar or a shared screen.
[[nodiscard]] bool nativeZoomMeetingTitle(std::string_view title);

}  // namespace callmonitor
