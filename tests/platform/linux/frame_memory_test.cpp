#include "platform/linux/frame_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

const ObjectName first{":1.5", "/1"};
const ObjectName second{":1.5", "/2"};
const ObjectName foreign{":1.9", "/1"};

FrameMemory allKnown() {
  return {1, {{first, 10}, {foreign, 30}}, {{second, 20}}};
}

ClientWindow window(std::uint32_t id) {
  ClientWindow made;
  made.id = id;
  return made;
}

std::set<std::uint32_t> numbers(const FrameMemory& memory) {
  std::set<std::uint32_t> found;
  for (const FramePairs* pairs : {&memory.certain, &memory.passing}) {
    for (const auto& [frame, number] : *pairs) found.insert(number);
  }
  return found;
}

TEST(FrameMemory, ForgetsThePairsOfApplicationsThatAreNotRegistered) {
  struct Case {
    std::string name;
    std::set<std::string> registered;
    std::set<std::uint32_t> kept;
  };
  const std::vector<Case> cases{
      {"all are registered", {":1.5", ":1.9"}, {10, 20, 30}},
      {"a browser that has quit keeps no window number", {":1.9"}, {30}},
      {"a browser that was started again has another name", {":1.9", ":1.12"}, {30}},
      {"nobody is registered", {}, {}},
  };
  for (const Case& each : cases) {
    FrameMemory memory = allKnown();
    forgetUnregistered(memory, each.registered);
    EXPECT_EQ(numbers(memory), each.kept) << each.name;
  }
}

TEST(FrameMemory, ForgetsThePairsOfClosedWindows) {
  struct Case {
    std::string name;
    std::vector<ClientWindow> listed;
    std::set<std::uint32_t> kept;
  };
  const std::vector<Case> cases{
      {"all are listed", {window(30), window(20), window(10), window(40)}, {10, 20, 30}},
      {"a window that is not listed", {window(20), window(30)}, {20, 30}},
      {"no window is listed", {}, {}},
  };
  for (const Case& each : cases) {
    FrameMemory memory = allKnown();
    forgetClosedWindows(memory, each.listed);
    EXPECT_EQ(numbers(memory), each.kept) << each.name;
  }
}

TEST(FrameMemory, ForgetsThePairsOfFramesThatLeftTheirApplication) {
  struct Case {
    std::string name;
    std::vector<ObjectName> children;
    std::set<std::uint32_t> kept;
  };
  const std::vector<Case> cases{
      {"both frames are there", {second, first}, {10, 20, 30}},
      {"a frame that is gone", {second}, {20, 30}},
      {"an application without children leaves another's alone", {}, {30}},
      {"another application's frame of the same path is not this one's", {foreign}, {30}},
  };
  for (const Case& each : cases) {
    FrameMemory memory = allKnown();
    forgetClosedFrames(memory, ":1.5", each.children);
    EXPECT_EQ(numbers(memory), each.kept) << each.name;
  }
}

TEST(FrameMemory, NamesByEveryPairAndReservesByCertainOnes) {
  const FrameMemory memory = allKnown();
  EXPECT_EQ(windowOf(memory, first), 10U);
  EXPECT_EQ(windowOf(memory, second), 20U) << "a pair of this cycle only";
  EXPECT_EQ(windowOf(memory, {":1.5", "/3"}), std::nullopt);
  EXPECT_TRUE(paired(memory, 10));
  EXPECT_FALSE(paired(memory, 20)) << "a doubtful pair takes no window away";
  EXPECT_FALSE(paired(memory, 40));
}

}  // namespace
}  // namespace callmonitor::platform
