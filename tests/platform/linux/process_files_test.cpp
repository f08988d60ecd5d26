#include "platform/linux/process_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

std::string statLine(const std::string& name, const std::string& start) {
  return "42 (" + name + ") S 7 42 42 0 -1 4194560 100 0 0 0 5 3 0 0 20 0 1 0 " + start +
         " 1000 200\n";
}

TEST(ParseProcessStat, CountsFieldsFromTheEndOfTheName) {
  struct Case {
    std::string name;
    std::string text;
    std::optional<std::uint64_t> start;
  };
  const std::vector<Case> cases{
      {"a plain name", statLine("chromium", "5150"), 5150},
      {"a name with spaces", statLine("Web Content", "5150"), 5150},
      {"a name with parentheses and numbers", statLine("a) R 1 (b", "5150"), 5150},
      {"a start time beyond 32 bits", statLine("x", "99999999999"), 99999999999},
      {"a start time that is no number refuses", statLine("x", "soon"), std::nullopt},
      {"a line without a name refuses", "42 S 7", std::nullopt},
      {"a line that breaks off refuses", "42 (x) S 7 42", std::nullopt},
      {"nothing refuses", "", std::nullopt},
  };
  for (const Case& each : cases) {
    const auto stat = parseProcessStat(each.text);
    ASSERT_EQ(stat.has_value(), each.start.has_value()) << each.name;
    if (!stat) continue;
    EXPECT_EQ(stat->startTicks, *each.start) << each.name;
    EXPECT_EQ(stat->state, 'S') << each.name;
    EXPECT_EQ(stat->parent, 7) << each.name;
  }
}

TEST(ParseBootTime, FindsTheLineWhereverItStands) {
  EXPECT_EQ(parseBootTime("cpu 1 2\nbtime 1700000000\nprocesses 3\n"), 1700000000);
  EXPECT_EQ(parseBootTime("btime 5"), 5);
  EXPECT_EQ(parseBootTime("cpu 1\nxbtime 5\n"), std::nullopt);
  EXPECT_EQ(parseBootTime("btime x\n"), std::nullopt);
}

TEST(SplitAtNul, KeepsEmptyTextsBetweenOthers) {
  const std::string text("a\0\0b c\0", 7);
  EXPECT_EQ(splitAtNul(text), (std::vector<std::string>{"a", "", "b c"}));
  EXPECT_TRUE(splitAtNul("").empty());
}

TEST(LaunchTime, IsTheSameDoubleAtEveryReading) {
  const auto stat = processStat(getpid());
  ASSERT_TRUE(stat.has_value());
  const auto first = launchTime(*stat);
  ASSERT_TRUE(first.has_value());
  EXPECT_GT(*first, 0);
  const auto again = processStat(getpid());
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(launchTime(*again), first);
}

TEST(ProcessStat, IsAbsentWithoutAProcess) {
  EXPECT_FALSE(processStat(-1).has_value());
}

}  // namespace
}  // namespace callmonitor::platform
