// Whatever a scenario's desktop looks like, this platform and the one made of data tell the same of
// it: every record, with all its fields, in the same order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "platform/scenario/loader.h"
#include "scenarios/played_stream.h"
#include "support/emitted_records.h"

namespace callmonitor::macos {
namespace {

namespace fs = std::filesystem;
using support::Json;

// Milliseconds by which one record's times may differ. The wall clock of the desktop made of data
// is a sum, which every message that takes time rounds: by up to 0.12 microseconds, half of what a
// date resolves today. Every message that takes time shows, for none takes less than 10 ms.
constexpr double dateTolerance = 0.05;

std::vector<fs::path> scenarioFiles() {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(SCENARIO_DIRECTORY)) {
    if (entry.path().extension() == ".scenario") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

// What the replay of a scenario writes; fails the test where it does not end well.
std::string replayed(const fs::path& scenario) {
  const std::string command =
      std::string("'") + REPLAY_EXECUTABLE + "' '" + scenario.string() + "' 2>&1";
  std::string output;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << "cannot start " << command;
    return output;
  }
  std::array<char, 4096> buffer{};
  for (std::size_t read = 0; (read = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), read);
  }
  EXPECT_EQ(pclose(pipe), 0) << command << "\n" << output;
  return output;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// The records of a stream, with the random identifiers in it named by their first appearance.
std::vector<Json> recordsOf(const std::string& stream) {
  static const std::regex identifier(
      "[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}");
  std::map<std::string, std::string> names;
  std::string named;
  std::smatch found;
  std::string rest = stream;
  while (std::regex_search(rest, found, identifier)) {
    const auto [name, fresh] =
        names.try_emplace(found.str(), "identifier " + std::to_string(names.size()));
    named += found.prefix().str() + name->second;
    rest = found.suffix().str();
  }
  named += rest;
  std::vector<Json> records;
  for (std::size_t at = 0; at < named.size();) {
    const std::size_t end = std::min(named.find('\n', at), named.size());
    records.push_back(Json::parse(named.substr(at, end - at), nullptr,
                                  /*allow_exceptions=*/false));
    at = end + 1;
  }
  return records;
}

struct SameStream : testing::TestWithParam<fs::path> {};

TEST_P(SameStream, AsOnTheDesktopMadeOfData) {
  const scenario::Loaded loaded = scenario::loadScenario(GetParam().string());
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  std::vector<Json> here = recordsOf(joined(scenarios::playedStream(*loaded.scenario)));
  std::vector<Json> there = recordsOf(replayed(GetParam()));
  ASSERT_FALSE(there.empty());
  ASSERT_EQ(here.size(), there.size());
  for (std::size_t i = 0; i < here.size(); ++i) {
    ASSERT_TRUE(here[i].is_object() && here[i]["observedAt"].is_number()) << here[i];
    ASSERT_TRUE(there[i].is_object() && there[i]["observedAt"].is_number()) << there[i];
    EXPECT_NEAR(here[i]["observedAt"].get<double>(), there[i]["observedAt"].get<double>(),
                dateTolerance)
        << "record " << i;
    here[i].erase("observedAt");
    there[i].erase("observedAt");
    EXPECT_EQ(here[i], there[i]) << "record " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(, SameStream, testing::ValuesIn(scenarioFiles()),
                         [](const auto& file) { return file.param.stem().string(); });

}  // namespace
}  // namespace callmonitor::macos
