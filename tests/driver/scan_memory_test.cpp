// What the scanning remembers of elements.
#include "driver/scan_memory.h"

#include <gtest/gtest.h>

#include "platform/scripted/desktop.h"

namespace callmonitor {
namespace {

struct ScanMemoryOf : testing::Test {
  ScanMemoryOf() { scripted::reset(); }
  ScanMemory memory;
};

TEST_F(ScanMemoryOf, AFreshMemoryIsEmptyAndUnturned) {
  EXPECT_TRUE(memory.elements.empty());
  EXPECT_TRUE(memory.accessibilityEnabled.empty());
  EXPECT_EQ(memory.scanOffset, 0);
}

TEST_F(ScanMemoryOf, AnElementIsRememberedUnderTheSameIdentifierEveryTime) {
  const std::string first = remember(memory, scripted::element("a"));
  EXPECT_EQ(remember(memory, scripted::element("a")), first);
  EXPECT_NE(remember(memory, scripted::element("b")), first);
  EXPECT_EQ(memory.elements.at(first), scripted::element("a"));
  EXPECT_TRUE(memory.seen.contains(first));
}

TEST_F(ScanMemoryOf, AnElementThatACycleDidNotTouchIsForgotten) {
  const std::string a = remember(memory, scripted::element("a"));
  forgetUnseen(memory, {});
  EXPECT_TRUE(memory.elements.contains(a)) << "touched in the cycle that ends";
  EXPECT_TRUE(memory.seen.empty()) << "the next cycle has touched nothing yet";
  const std::string b = remember(memory, scripted::element("b"));
  forgetUnseen(memory, {});
  EXPECT_FALSE(memory.elements.contains(a));
  EXPECT_TRUE(memory.elements.contains(b));
}

TEST_F(ScanMemoryOf, TheViewOfATrackedCallKeepsElementAndIdentifierUntouched) {
  const std::string a = remember(memory, scripted::element("a"));
  for (int cycle = 0; cycle < 3; ++cycle) forgetUnseen(memory, {a});
  EXPECT_EQ(memory.elements.at(a), scripted::element("a"));
  EXPECT_EQ(remember(memory, scripted::element("a")), a);
}

TEST_F(ScanMemoryOf, AnElementThatWasTouchedInEachCycleKeepsItsIdentifier) {
  const std::string a = remember(memory, scripted::element("a"));
  for (int cycle = 0; cycle < 3; ++cycle) {
    EXPECT_EQ(remember(memory, scripted::element("a")), a);
    forgetUnseen(memory, {});
  }
}

}  // namespace
}  // namespace callmonitor
