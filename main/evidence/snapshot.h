// One accessibility element as the label scan needs it, and the lazy reading of it.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "evidence/attributes.h"
#include "evidence/label_rules.h"
#include "text/unicode.h"

namespace callmonitor {

// An attribute that is absent or could not be read is an empty text, not hidden, enabled, without
// children.
template <class Node>
struct AXSnapshot {
  std::string role;
  std::string roleDescription;
  std::string subrole;
  std::string title;
  std::string description;
  std::string value;
  bool hidden = false;
  bool enabled = true;
  std::vector<Node> children;

  // The text by which the rules know the element.
  [[nodiscard]] std::string label() const { return title + " " + description; }

  // Whether the element and its subtree stay out of the evidence. The page itself never does,
  // whatever its title, and neither does a Teams post-call sentence.
  [[nodiscard]] bool excluded(bool scanRoot) const {
    if (scanRoot && role == webAreaRole) return false;
    if (providerNoticeLeaf(role, subrole, title, description)) return false;
    return excludedContent(role, subrole, label());
  }
};

// The result of reading one element.
template <class Node>
struct LabelSnapshot {
  // Absent when the role could not be read, is absent or empty: nothing is known about the element.
  std::optional<AXSnapshot<Node>> snapshot;
  // Attribute failures, each the attribute name, ":" and the decimal code; ascending.
  std::vector<std::string> failures;
};

// The attribute failure as reports spell it, "AXDescription:-25200" for one.
[[nodiscard]] inline std::string failureText(std::string_view name, std::int32_t code) {
  return std::string(name) + ":" + std::to_string(code);
}

// Words for what the preview recovery saw of a button that would not tell its description: how its
// title and its identifier class. Diagnostics only.
[[nodiscard]] std::string previewHint(std::string_view title, std::string_view identifier);

// Whether title or identifier mark a button as the "Audio" button of the Zoom preview.
[[nodiscard]] bool previewAudioButton(std::string_view title, std::string_view identifier);

// Reads one element through `read(node, attribute name)`, attribute by attribute in an order that
// lets a deadline cut off the least useful ones. What a hidden or excluded element holds is not
// even asked for. `providerWebRoot` says that the element is the root of a browser's scan.
//
// The native Zoom preview answers the description of its "Audio" button with an error; with
// `nativeZoomPreviewRecovery` such a button gets its description back, and `failureHint(text)`
// learns what was seen.
template <class Node, class FailureHint, class Read>
[[nodiscard]] LabelSnapshot<Node> readLabelSnapshot(const Node& node, bool nativeZoomWindow,
                                                    bool nativeZoomPreviewRecovery,
                                                    bool providerWebRoot, FailureHint failureHint,
                                                    Read read) {
  LabelSnapshot<Node> result;
  const auto readReporting = [&](std::string_view name) {
    ReadingOf<Node> reading = read(node, name);
    if (reading.code != platform::code::success && !absentAttribute(reading.code)) {
      result.failures.push_back(failureText(name, reading.code));
    }
    return reading;
  };
  const auto finish = [&](std::optional<AXSnapshot<Node>> snapshot) {
    std::ranges::sort(result.failures);
    result.snapshot = std::move(snapshot);
    return result;
  };

  AXSnapshot<Node> snapshot;
  snapshot.role = textIn(readReporting(attributes::role));
  if (snapshot.role.empty()) return finish(std::nullopt);
  if (nativeZoomWindow) {
    snapshot.roleDescription = textIn(readReporting(attributes::roleDescription));
  }
  snapshot.subrole = textIn(readReporting(attributes::subrole));
  snapshot.title = textIn(readReporting(attributes::title));
  snapshot.hidden = flagIn(readReporting(attributes::hidden), false);
  if (snapshot.hidden) return finish(snapshot);
  snapshot.enabled = flagIn(readReporting(attributes::enabled), true);

  const ReadingOf<Node> description = readReporting(attributes::description);
  snapshot.description = textIn(description);
  if (nativeZoomPreviewRecovery && description.code == platform::code::failure &&
      snapshot.role == buttonRole) {
    const std::string identifier = textIn(readReporting(attributes::identifier));
    failureHint(previewHint(snapshot.title, identifier));
    if (previewAudioButton(snapshot.title, identifier)) {
      snapshot.description = "Audio";
      std::erase(result.failures, failureText(attributes::description, description.code));
    }
  }
  if (snapshot.excluded(providerWebRoot)) return finish(snapshot);

  snapshot.value = textIn(readReporting(attributes::value));
  snapshot.children = elementsIn(readReporting(attributes::children));
  return finish(snapshot);
}

}  // namespace callmonitor
