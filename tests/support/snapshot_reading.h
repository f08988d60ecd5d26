// One element read by the real code, with a note of everything it asked for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/synthetic_page.h"

namespace callmonitor::test {

struct SnapshotReading {
  LabelSnapshot<NodeKey> result;
  std::vector<std::string> asked;  // attribute names in order
  std::vector<std::string> hints;  // as the preview recovery gave them
};

struct SnapshotSettings {
  bool nativeZoomWindow = false;
  bool previewRecovery = false;
  bool webRoot = false;
};

[[nodiscard]] inline SnapshotReading readPart(const Part& element,
                                              const SnapshotSettings& settings = {}) {
  const SyntheticTree tree = treeOf(element);
  SnapshotReading reading;
  reading.result = readLabelSnapshot(
      NodeKey{"root"}, settings.nativeZoomWindow, settings.previewRecovery, settings.webRoot,
      [&](const std::string& hint) { reading.hints.push_back(hint); },
      [&](const NodeKey& node, std::string_view name) {
        reading.asked.emplace_back(name);
        return readSynthetic(tree, node, name);
      });
  return reading;
}

}  // namespace callmonitor::test
