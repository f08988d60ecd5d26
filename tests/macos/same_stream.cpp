// Whatever a scenario's desktop looks like, this platform and the one made of data tell the same of
// it: every record, with all its fields, in the same order.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "platform/scenario/loader.h"
#include "scenarios/played_stream.h"
#include "scenarios/replayed.h"
#include "scenarios/scenario_files.h"
#include "support/emitted_records.h"

namespace callmonitor::macos {
namespace {

using support::Json;

// Milliseconds by which one record's times may differ. The wall clock of the desktop made of data
// is a sum, which every message that takes time rounds: by up to 0.12 microseconds, half of what a
// date resolves today. Every message that takes time shows, for none takes less than 10 ms.
constexpr double dateTolerance = 0.05;

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

struct SameStream : testing::TestWithParam<std::string> {};

TEST_P(SameStream, AsOnTheDesktopMadeOfData) {
  const std::string file = scenarios::fileOf(GetParam(), ".scenario").string();
  const scenario::Loaded loaded = scenario::loadScenario(file);
  ASSERT_TRUE(loaded.scenario.has_value()) << loaded.error;
  std::vector<Json> here = recordsOf(scenarios::joined(scenarios::playedStream(*loaded.scenario)));
  const scenarios::Replayed replayed = scenarios::replay("'" + file + "'");
  ASSERT_EQ(replayed.status, 0) << replayed.output;
  std::vector<Json> there = recordsOf(replayed.output);
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

INSTANTIATE_TEST_SUITE_P(, SameStream, testing::ValuesIn(scenarios::namesOf(".scenario")),
                         [](const auto& file) { return file.param; });

}  // namespace
}  // namespace callmonitor::macos
