// The labels that a page has to give, whichever kind of tree it is.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/synthetic_page.h"

namespace callmonitor::test {

[[nodiscard]] inline Part button(std::string title) {
  return part("AXButton", std::move(title));
}

[[nodiscard]] inline Part heading(std::string title) {
  return part("AXHeading", std::move(title));
}

[[nodiscard]] inline Part window(std::vector<Part> children) {
  return holding(part("AXWindow"), std::move(children));
}

struct ScanCase {
  std::string_view sentence;
  Part page;
  ScanSettings settings;
  std::vector<std::string> controls;
  std::vector<std::string> notices;
};

// Scans every page live and as plain data, and expects the same labels of both.
inline void expectLabels(const std::vector<ScanCase>& cases) {
  for (const ScanCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const Evidence live = scanLive(row.page, row.settings);
    EXPECT_EQ(live.controls, row.controls);
    EXPECT_EQ(live.notices, row.notices);
    EXPECT_TRUE(live.complete);
    const Evidence data = scanData(row.page, row.settings);
    EXPECT_EQ(data.controls, row.controls);
    EXPECT_EQ(data.notices, row.notices);
    EXPECT_EQ(data.nodes, live.nodes);
  }
}

}  // namespace callmonitor::test
