// Reads back what the code under test wrote to standard output.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

namespace callmonitor::support {

using Json = nlohmann::json;

// The lines that `action` wrote, each without its line feed. A last line without one fails the
// test.
template <class Action>
std::vector<std::string> linesWrittenBy(Action action) {
  testing::internal::CaptureStdout();
  action();
  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(output.empty() || output.ends_with('\n')) << "an unfinished line: " << output;
  std::vector<std::string> lines;
  std::string line;
  for (const char c : output) {
    if (c == '\n') {
      lines.push_back(line);
      line.clear();
    } else {
      line += c;
    }
  }
  return lines;
}

// The records that `action` wrote. A line that is not one JSON object fails the test.
template <class Action>
std::vector<Json> recordsWrittenBy(Action action) {
  std::vector<Json> records;
  for (const std::string& line : linesWrittenBy(action)) {
    records.push_back(Json::parse(line, nullptr, /*allow_exceptions=*/false));
    EXPECT_TRUE(records.back().is_object()) << "not a record: " << line;
  }
  return records;
}

inline std::set<std::string> keysOf(const Json& record) {
  std::set<std::string> keys;
  for (const auto& [key, value] : record.items()) keys.insert(key);
  return keys;
}

// Whether a record is an observation, a "client", a "client-scan" or a "health" record.
inline std::string kindOf(const Json& record) {
  return record.contains("type") ? record["type"].get<std::string>() : "observation";
}

inline std::vector<Json> ofKind(const std::vector<Json>& records, const std::string& kind) {
  std::vector<Json> chosen;
  for (const Json& record : records) {
    if (kindOf(record) == kind) chosen.push_back(record);
  }
  return chosen;
}

}  // namespace callmonitor::support
