#include "platform/linux/window_owner.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::platform {
namespace {

TEST(OwnerHere, BelievesProcessNumbersOfThisMachineOnly) {
  struct Case {
    std::string name;
    std::optional<std::uint32_t> pid;
    std::optional<std::string_view> machine;
    std::optional<std::int32_t> expected;
  };
  const std::vector<Case> cases{
      {"a window of this machine", 42, "desk", 42},
      {"a host name in other letters", 42, "DESK", 42},
      {"a window that names no machine", 42, std::nullopt, 42},
      {"a window of another machine", 42, "server", std::nullopt},
      {"a machine whose name begins alike", 42, "desktop", std::nullopt},
      {"a window that names no process", std::nullopt, "desk", std::nullopt},
      {"process number zero is none", 0, "desk", std::nullopt},
      {"the highest number", 0x7FFFFFFF, "desk", 0x7FFFFFFF},
      {"a number beyond all", 0x80000000, "desk", std::nullopt},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(ownerHere(each.pid, each.machine, "desk"), each.expected) << each.name;
  }
}

}  // namespace
}  // namespace callmonitor::platform
