// The replay executable as a process: what it writes, and how it ends.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "scenarios/replayed.h"
#include "scenarios/story.h"

namespace callmonitor::scenarios {
namespace {

struct Replay : testing::Test {
  std::string file =
      (std::filesystem::path(testing::TempDir()) /
       ("replay_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
        ".scenario"))
          .string();

  void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }
  ~Replay() override { std::filesystem::remove(file); }
};

TEST_F(Replay, AScenarioIsPlayedToItsEnd) {
  write("trust no\nend 3s\n");
  const Replayed result = replay("'" + file + "'");
  EXPECT_EQ(result.status, 0);
  std::vector<std::string> stream;
  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) stream.push_back(line);
  ASSERT_EQ(stream.size(), 4U) << result.output;
  const std::vector<std::string> told = story(stream, 1.75e9);
  EXPECT_EQ(tellingLines(told.at(0) + "\n" + told.at(1)),
            (std::vector<std::string>{"0s scan untrusted", "0s..2s 3x not trusted"}));
}

TEST_F(Replay, AScenarioThatDoesNotLoadSaysWhichLineAndWhy) {
  write("end 3s\nfront nobody\n");
  const Replayed result = replay("'" + file + "'");
  EXPECT_EQ(result.status, 65);
  EXPECT_EQ(result.output, file + ": line 2: no application is called \"nobody\" then\n");
}

TEST_F(Replay, AMissingFileIsAnError) {
  const Replayed result = replay("'" + file + "'");
  EXPECT_EQ(result.status, 65);
  EXPECT_EQ(result.output, file + ": the file cannot be read\n");
}

TEST_F(Replay, ADirectoryIsNoScenario) {
  const std::string directory = testing::TempDir();
  const Replayed result = replay("'" + directory + "'");
  EXPECT_EQ(result.status, 65);
  EXPECT_EQ(result.output, directory + ": the file cannot be read\n");
}

TEST_F(Replay, AnIncludedDirectoryCannotBeRead) {
  write("include .\nend 3s\n");
  const Replayed result = replay("'" + file + "'");
  EXPECT_EQ(result.status, 65);
  EXPECT_EQ(result.output, file + ": line 1: \".\" cannot be read\n");
}

TEST_F(Replay, WrongArgumentsShowTheUsage) {
  for (const std::string arguments : {"", "--real-time", "a b", "a --fast"}) {
    const Replayed result = replay(arguments);
    EXPECT_EQ(result.status, 64) << arguments;
    EXPECT_TRUE(result.output.starts_with("usage: call-monitor-replay SCENARIO")) << result.output;
  }
}

TEST_F(Replay, RealTimeWaitsForReal) {
  write("trust no\nend 2s\n");
  const auto start = std::chrono::steady_clock::now();
  const Replayed fast = replay("'" + file + "'");
  const auto between = std::chrono::steady_clock::now();
  const Replayed slow = replay("'" + file + "' --real-time");
  const std::chrono::duration<double> slowTime = std::chrono::steady_clock::now() - between;
  EXPECT_GE(slowTime.count(), 1.0) << "the second cycle comes a second after the first";
  EXPECT_LT(std::chrono::duration<double>(between - start).count(), slowTime.count());
  EXPECT_EQ(fast.output, slow.output);
  EXPECT_EQ(slow.status, 0);
}

}  // namespace
}  // namespace callmonitor::scenarios
