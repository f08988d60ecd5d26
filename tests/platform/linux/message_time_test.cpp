#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility_bus.h"

namespace callmonitor::platform {
namespace {

TEST(TimeFor, LeavesAMessageWhatItsQuestionHasLeft) {
  struct Case {
    std::string name;
    std::optional<double> deadline;
    double now;
    std::optional<std::uint64_t> expected;
  };
  const std::vector<Case> cases{
      {"a message alone has its limit", std::nullopt, 100, 200'000},
      {"the first message of a question has the whole of it", 100.25, 100, 200'000},
      {"a later one has what is left", 100.125, 100, 125'000},
      {"none is sent when nothing is left", 100, 100, std::nullopt},
      {"none is sent afterwards", 100, 101, std::nullopt},
      {"less than a microsecond is nothing: zero would be no limit", 100, 99.9999999, std::nullopt},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(timeFor({{":1.5", "/1"}, 200'000, each.deadline}, each.now), each.expected)
        << each.name;
  }
}

TEST(TimeFor, HoldsForEveryObjectOfTheApplication) {
  const BusTarget target{{":1.5", "/1"}, 150'000, 12.5};
  const BusTarget other = target.at({":1.5", "/2"});
  EXPECT_EQ(other.object.path, "/2");
  EXPECT_EQ(other.limit, 150'000U);
  EXPECT_EQ(other.deadline, 12.5);
}

TEST(Send, CountsAnApplicationAsSilentOnceItsQuestionIsOverdue) {
  sd_bus* made = nullptr;
  ASSERT_GE(sd_bus_new(&made), 0);
  AccessibilityBus bus;
  bus.connection.reset(made);
  bus.rememberSilent = true;
  const double past = systemUptime() - 1;
  EXPECT_EQ(send(bus, {{":1.5", "/1"}, 200'000, past}, "GetRole", {}).code, code::cannotComplete);
  EXPECT_TRUE(bus.silent.contains(":1.5"));
}

}  // namespace
}  // namespace callmonitor::platform
