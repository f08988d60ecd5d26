// In which order the windows of an application are looked at, and how far the look comes.
#include <gtest/gtest.h>

#include <cmath>

#include "support/sampling.h"

namespace callmonitor {
namespace {

using namespace support;
namespace code = platform::code;

struct WindowWalk : SamplingTest {
  // The windows of native client 42 in the order in which they are scanned.
  std::vector<std::string> scanned() {
    (void)sample(42);
    return callsAfter("scan ");
  }
};

using Names = std::vector<std::string>;

std::vector<Node> windows(const Names& names) {
  std::vector<Node> shown;
  for (const std::string& name : names) shown.push_back(window(name, name));
  return shown;
}

TEST_F(WindowWalk, WindowsTakeTurnsFromCycleToCycle) {
  start(42, "us.zoom.xos", windows({"a", "b", "c"}));
  const std::vector<Names> turns{
      {"a", "b", "c"}, {"b", "c", "a"}, {"c", "a", "b"}, {"a", "b", "c"}};
  for (std::size_t offset = 0; offset < turns.size(); ++offset) {
    memory.scanOffset = static_cast<long>(offset);
    EXPECT_EQ(scanned(), turns[offset]);
  }
}

TEST_F(WindowWalk, WindowsOfTrackedCallsComeFirstAndOtherwiseKeepTheirTurn) {
  start(42, "us.zoom.xos", windows({"a", "b", "c", "d"}));
  track(42, {"zoom", "zoom:native-1"}, "d", "d");
  EXPECT_EQ(scanned(), (Names{"d", "a", "b", "c"}));
  track(42, {"zoom", "zoom:native-0"}, "b", "b");
  EXPECT_EQ(scanned(), (Names{"b", "d", "a", "c"}));
  memory.scanOffset = 2;
  EXPECT_EQ(scanned(), (Names{"d", "b", "c", "a"}));
}

TEST_F(WindowWalk, AWindowOfAnotherProcesssCallHasNoPrecedence) {
  start(42, "us.zoom.xos", windows({"a", "b"}));
  track(43, {"zoom", "zoom:native-1"}, "b", "b");
  EXPECT_EQ(scanned(), (Names{"a", "b"}));
  track(42, {"zoom", "zoom:native-2"}, "b", "b");
  EXPECT_EQ(scanned(), (Names{"b", "a"})) << "nor does it hide a call of the process itself";
}

TEST_F(WindowWalk, TheNumberOfWindowsHasNoLimit) {
  Names names;
  for (int i = 0; i < 300; ++i) names.push_back("w" + std::to_string(i));
  start(42, "us.zoom.xos", windows(names));
  const AppSample sampled = sample(42);
  EXPECT_EQ(sampled.surfaces.size(), 300U);
  EXPECT_EQ(sampled.windows->size(), 300U);
  EXPECT_TRUE(sampled.viewInventoryComplete);
}

// The deadline of the cycle.

TEST_F(WindowWalk, TheWalkStopsBeforeAWindowOnceTheDeadlineIsReached) {
  start(42, "us.zoom.xos", windows({"a", "b", "c"}));
  clockAt("read b AXRole", deadline);
  const AppSample sampled = sample(42);
  EXPECT_FALSE(sampled.viewInventoryComplete);
  EXPECT_EQ(sampled.windows->size(), 3U) << "the windows themselves are known";
  ASSERT_EQ(sampled.surfaces.size(), 2U);
  EXPECT_EQ(sampled.surfaces[0].window, identifierOf("a"));
  EXPECT_EQ(timesCalled("scan c"), 0U);
}

TEST_F(WindowWalk, ADeadlineReachedAtTheEndOfTheLastWindowLeavesTheInventoryComplete) {
  start(42, "us.zoom.xos", windows({"a", "b"}));
  clockAt("read b AXRole", deadline);
  EXPECT_TRUE(sample(42).viewInventoryComplete);
}

TEST_F(WindowWalk, TheWalkStopsBeforeAPageOnceTheDeadlineIsReached) {
  start(7, "com.google.Chrome",
        {window("w", "Meet", {page("p1", meetAddress), page("p2", meetAddress)})});
  clockAt("scan p2", deadline);  // the later page comes first
  const AppSample sampled = sample(7);
  EXPECT_FALSE(sampled.viewInventoryComplete);
  ASSERT_EQ(sampled.surfaces.size(), 1U);
  EXPECT_EQ(sampled.surfaces[0].element, identifierOf("p2"));
  EXPECT_EQ(timesCalled("read p1 AXURL"), 0U);
}

// The search for pages.

TEST_F(WindowWalk, ASearchForPagesThatIsCutShortLeavesTheInventoryIncomplete) {
  const auto complete = [&](const std::vector<Node>& children) {
    scripted::reset();
    start(7, "com.google.Chrome", {window("w", "Meet", children)});
    return sample(7).viewInventoryComplete;
  };
  EXPECT_TRUE(complete(std::vector<Node>(100, group({}))));
  EXPECT_FALSE(complete(std::vector<Node>(101, group({})))) << "more children than are searched";
  // The window, 13 groups and the 91 below each are 1197 elements.
  std::vector<Node> many(13, group(std::vector<Node>(91, group({}))));
  many.push_back(group({}));
  many.push_back(group({}));
  EXPECT_TRUE(complete(many)) << "1199 elements";
  many.push_back(group({}));
  EXPECT_TRUE(complete(many)) << "1200 elements";
  many.push_back(group({}));
  EXPECT_FALSE(complete(many)) << "1201 elements";
}

TEST_F(WindowWalk, ASearchThatTakesHalfASecondLeavesTheInventoryIncomplete) {
  start(7, "com.google.Chrome", {window("w", "Meet", {group({})})});
  clockAt("read w.0 AXRole", std::nextafter(1000.5, 0.0));
  EXPECT_TRUE(sample(7).viewInventoryComplete);
  desktop().uptime = 1000;
  clockAt("read w.0 AXRole", 1000.5);
  EXPECT_FALSE(sample(7).viewInventoryComplete);
}

TEST_F(WindowWalk, OneWindowThatIsCutShortIsNotMadeGoodByTheNext) {
  start(7, "com.google.Chrome",
        {window("w1", "", std::vector<Node>(101, group({}))), window("w2", "", {group({})})});
  EXPECT_FALSE(sample(7).viewInventoryComplete);
}

TEST_F(WindowWalk, FailuresInsideTheSearchLeaveTheInventoryComplete) {
  start(7, "com.google.Chrome",
        {window("w", "Meet",
                {with(group({}), "AXChildren", scripted::codeAnswer(code::cannotComplete)),
                 with(group({}), "AXRole", scripted::codeAnswer(code::failure)),
                 with(group({}), "AXRole", scripted::codeAnswer(code::noValue)),
                 with(group({group({})}), "AXHidden", scripted::flagAnswer(true))})});
  EXPECT_TRUE(sample(7).viewInventoryComplete);
}

TEST_F(WindowWalk, FailuresInsideAScanLeaveTheInventoryComplete) {
  start(42, "us.zoom.xos",
        {window("w", "", {with(group({}), "AXRole", scripted::codeAnswer(code::failure))})});
  EXPECT_TRUE(sample(42).viewInventoryComplete);
}

// The time of one scan.

TEST_F(WindowWalk, AScanMayTakeHalfASecondAndDecidesNothingWhenItTakesMore) {
  const auto state = [&](double beginsAt, double laterAt) {
    scripted::reset();
    start(42, "us.zoom.xos", {window("w", "Zoom", callControls())});
    desktop().uptime = beginsAt;
    clockAt("read w.2 AXRole", laterAt);
    return sample(42).surfaces.at(0).state;
  };
  EXPECT_EQ(state(1000, 1000.25), CallState::joined);
  EXPECT_EQ(state(1000, std::nextafter(1000.5, 0.0)), CallState::joined);
  EXPECT_EQ(state(1000, 1000.5), CallState::unknown);
  EXPECT_EQ(state(1001, std::nextafter(1001.2, 0.0)), CallState::joined)
      << "up to the cycle's deadline";
  EXPECT_EQ(state(1001, 1001.2), CallState::unknown) << "but never past it";
}

TEST_F(WindowWalk, AScanTakes1600ElementsAndDecidesNothingWhenThereAreMore) {
  // The window, its three controls, and 16 groups with 99 or fewer elements each.
  const auto state = [&](int elements) {
    std::vector<Node> children = callControls();
    for (int left = elements - 4; left > 0; left -= 100) {
      children.push_back(
          group(std::vector<Node>(static_cast<std::size_t>(std::min(left, 100) - 1), group({}))));
    }
    scripted::reset();
    start(42, "us.zoom.xos", {window("w", "Zoom", children)});
    return sample(42).surfaces.at(0).state;
  };
  EXPECT_EQ(state(1600), CallState::joined);
  EXPECT_EQ(state(1601), CallState::unknown);
}

}  // namespace
}  // namespace callmonitor
