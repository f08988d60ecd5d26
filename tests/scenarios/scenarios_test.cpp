// Every scenario of this directory gives the stream that is expected beside it.
//
// With UPDATE_EXPECTATIONS=1 in the environment the expectations are written instead of compared,
// and every test whose expectation changed fails once, so that nobody takes that for a check.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/scenario/loader.h"
#include "scenarios/played_stream.h"
#include "scenarios/scenario_files.h"
#include "scenarios/story.h"

namespace callmonitor::scenarios {
namespace {

namespace fs = std::filesystem;

constexpr const char* updateFlag = "UPDATE_EXPECTATIONS";

// Writes the stream as the new expectation; comments at the head of the old one stay.
void update(const fs::path& path, const std::vector<std::string>& lines) {
  std::string text;
  std::istringstream old(contentOf(path));
  for (std::string line; std::getline(old, line) && line.starts_with('#');) text += line + "\n";
  std::ofstream(path, std::ios::binary) << text << joined(lines);
}

struct Scenarios : testing::TestWithParam<std::string> {};

TEST_P(Scenarios, GiveTheExpectedStream) {
  const scenario::Loaded loaded = scenario::loadScenario(fileOf(GetParam(), ".scenario").string());
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  EXPECT_FALSE(loaded.scenario->why.empty()) << "a scenario says why it exists: why \"...\"";

  const std::vector<std::string> told =
      story(playedStream(*loaded.scenario), scenario::startWallClock);
  const fs::path path = fileOf(GetParam(), ".expected");
  const std::string written = joined(tellingLines(joined(told)));
  const std::string expected = joined(tellingLines(contentOf(path)));
  const char* flag = std::getenv(updateFlag);
  if (flag != nullptr && std::string_view(flag) == "1") {
    if (written == expected) return;
    update(path, told);
    FAIL() << "the expectation was rewritten; review it and run again without " << updateFlag;
  }
  ASSERT_TRUE(fs::exists(path)) << "there is no expectation for this scenario; its stream is:\n"
                                << joined(told);
  EXPECT_EQ(written, expected);
}

INSTANTIATE_TEST_SUITE_P(, Scenarios, testing::ValuesIn(namesOf(".scenario")),
                         [](const auto& file) { return file.param; });

TEST(Expectations, EachHasItsScenario) {
  for (const std::string& name : namesOf(".expected")) {
    EXPECT_TRUE(fs::exists(fileOf(name, ".scenario"))) << name;
  }
}

}  // namespace
}  // namespace callmonitor::scenarios
