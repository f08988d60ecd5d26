// What the records of the stream hold, as their reader gets them.
#include "tracking/records.h"

#include <gtest/gtest.h>

#include "platform/scripted/desktop.h"
#include "support/emitted_records.h"
#include "tracking/writer.h"

namespace callmonitor {
namespace {

using namespace support;
using scripted::desktop;

// The record as it stands on the wire.
Json written(const Record& record) {
  const std::vector<Json> records = recordsWrittenBy([&] { emit(record); });
  EXPECT_EQ(records.size(), 1U);
  return records.empty() ? Json() : records.front();
}

struct RecordsWritten : testing::Test {
  RecordsWritten() { scripted::reset(); }
};

Observation observationOf(CallState state, bool mediaActive = false) {
  Call call;
  call.id = "F1E2D3C4-0000-4000-8000-000000000001";
  call.pid = 42;
  call.launchedAt = 1.0;
  call.conference = {"meet", "meet:abc-defg-hij"};
  call.sequence = 17;
  call.title = "Standup";
  call.mediaActive = mediaActive;
  return {call, state};
}

TEST_F(RecordsWritten, AnObservationHoldsTheCallAndItsState) {
  const Json record = written(serializedObservation(observationOf(CallState::joined), {}));
  EXPECT_EQ(keysOf(record),
            (std::set<std::string>{"version", "source", "provider", "callKey", "sessionId",
                                   "sequence", "state", "title", "mediaActive", "observedAt"}));
  EXPECT_TRUE(record["version"].is_number_integer());
  EXPECT_EQ(record["version"], 1);
  EXPECT_EQ(record["source"], "native");
  EXPECT_EQ(record["provider"], "meet");
  EXPECT_EQ(record["callKey"], "meet:abc-defg-hij");
  EXPECT_EQ(record["sessionId"], "F1E2D3C4-0000-4000-8000-000000000001");
  EXPECT_TRUE(record["sequence"].is_number_integer());
  EXPECT_EQ(record["sequence"], 17);
  EXPECT_EQ(record["state"], "joined");
  EXPECT_EQ(record["title"], "Standup");
  EXPECT_TRUE(record["mediaActive"].is_boolean());
  EXPECT_TRUE(record["observedAt"].is_number_float());
}

TEST_F(RecordsWritten, TheStateIsOneOfThreeWords) {
  const auto word = [](CallState state) {
    return written(serializedObservation(observationOf(state), {}))["state"];
  };
  EXPECT_EQ(word(CallState::joined), "joined");
  EXPECT_EQ(word(CallState::unknown), "unknown");
  EXPECT_EQ(word(CallState::left), "left");
}

TEST_F(RecordsWritten, MediaIsActiveOnlyInAJoinedCallWhoseMediaIs) {
  const auto active = [](CallState state, bool mediaActive) {
    return written(serializedObservation(observationOf(state, mediaActive), {}))["mediaActive"];
  };
  EXPECT_EQ(active(CallState::joined, true), true);
  EXPECT_EQ(active(CallState::joined, false), false);
  EXPECT_EQ(active(CallState::unknown, true), false);
  EXPECT_EQ(active(CallState::left, true), false);
}

TEST_F(RecordsWritten, AnEmptyTitleIsWrittenAsAnEmptyText) {
  Observation observation = observationOf(CallState::joined);
  observation.call.title = "";
  EXPECT_EQ(written(serializedObservation(observation, {}))["title"], "");
}

TEST_F(RecordsWritten, AnObservationNamesTheCallsOwnApplicationBeforeTheOneGiven) {
  struct Row {
    const char* sentence;
    std::optional<std::string> own;
    std::optional<std::string> given;
    std::optional<std::string> reported;
  };
  const std::string longest(1000, 'x');
  for (const Row& row : std::vector<Row>{
           {"neither", std::nullopt, std::nullopt, std::nullopt},
           {"the one given stands in", std::nullopt, "com.google.Chrome", "com.google.Chrome"},
           {"the call's own", "us.zoom.xos", std::nullopt, "us.zoom.xos"},
           {"the call's own comes first", "us.zoom.xos", "com.google.Chrome", "us.zoom.xos"},
           {"no length is too long", longest, std::nullopt, longest},
           {"nor of the one given", std::nullopt, longest, longest},
       }) {
    SCOPED_TRACE(row.sentence);
    Observation observation = observationOf(CallState::unknown);
    observation.call.applicationBundleID = row.own;
    const Json record = written(serializedObservation(observation, row.given));
    ASSERT_EQ(record.contains("applicationBundleId"), row.reported.has_value());
    if (row.reported) {
      EXPECT_EQ(record["applicationBundleId"], *row.reported);
    }
  }
}

TEST_F(RecordsWritten, TheScreenWindowIsAnInteger) {
  desktop().applications = {{42, 1.0, "com.google.Chrome", true}};
  desktop().windows = {{42, "Standup", 0, 4294967297}};
  const Json record = written(serializedObservation(observationOf(CallState::joined), {}));
  EXPECT_TRUE(record["screenWindowId"].is_number_integer());
  EXPECT_EQ(record["screenWindowId"].get<std::int64_t>(), 4294967297);
}

TEST_F(RecordsWritten, TheTimeIsTheWallClockInMillisecondsAsADoubleWithoutLoss) {
  for (const double seconds : {1750000000.0, 1750000000.123456, 1.0 / 3.0}) {
    desktop().wallClock = seconds;
    const std::vector<Record> records{
        serializedObservation(observationOf(CallState::unknown), {}),
        serializedClient("zoom", "zoom:pid-42", 42, std::nullopt, false, false),
        serializedClientScan("untrusted", std::nullopt, std::nullopt), serializedHealth(true)};
    for (const Record& record : records) {
      const Json read = written(record)["observedAt"];
      EXPECT_TRUE(read.is_number_float()) << "a whole number of milliseconds is a double too";
      EXPECT_EQ(read.get<double>(), seconds * 1000.0);
    }
  }
}

TEST_F(RecordsWritten, AClientHoldsWhoIsActiveAndHow) {
  const Json record =
      written(serializedClient("zoom", "zoom:pid-42", 42, "us.zoom.xos", false, true));
  EXPECT_EQ(keysOf(record),
            (std::set<std::string>{"type", "version", "provider", "key", "state", "mediaActive",
                                   "lobby", "pid", "observedAt", "applicationBundleId"}));
  EXPECT_EQ(record["type"], "client");
  EXPECT_TRUE(record["version"].is_number_integer());
  EXPECT_EQ(record["version"], 1);
  EXPECT_EQ(record["provider"], "zoom");
  EXPECT_EQ(record["key"], "zoom:pid-42");
  EXPECT_EQ(record["state"], "active");
  EXPECT_EQ(record["mediaActive"], false);
  EXPECT_EQ(record["lobby"], true);
  EXPECT_TRUE(record["pid"].is_number_integer());
  EXPECT_EQ(record["pid"], 42);
  EXPECT_EQ(record["applicationBundleId"], "us.zoom.xos");
  EXPECT_EQ(written(serializedClient("meet", "k", -2147483647 - 1, {}, true, false))["pid"],
            -2147483648LL);
  EXPECT_EQ(written(serializedClient("meet", "k", 1, {}, true, false))["mediaActive"], true);
}

TEST_F(RecordsWritten, AClientsBundleIdentifierIsLeftOutUnlessShorterThan256Characters) {
  const auto repeated = [](const std::string& character, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += character;
    return text;
  };
  struct Row {
    const char* sentence;
    std::optional<std::string> bundle;
    bool reported;
  };
  for (const Row& row : std::vector<Row>{
           {"absent", std::nullopt, false},
           {"empty", "", false},
           {"255 characters", repeated("x", 255), true},
           {"256 characters", repeated("x", 256), false},
           {"255 characters of two bytes", repeated("\u00e9", 255), true},
           {"255 characters of two code points", repeated("e\u0301", 255), true},
           {"256 characters of two code points", repeated("e\u0301", 256), false},
       }) {
    SCOPED_TRACE(row.sentence);
    const Json record = written(serializedClient("zoom", "k", 1, row.bundle, false, false));
    ASSERT_EQ(record.contains("applicationBundleId"), row.reported);
    if (row.reported) {
      EXPECT_EQ(record["applicationBundleId"], *row.bundle);
    }
  }
}

TEST_F(RecordsWritten, HealthHoldsWhetherTreesMayBeRead) {
  for (const bool trusted : {true, false}) {
    const Json record = written(serializedHealth(trusted));
    EXPECT_EQ(keysOf(record), (std::set<std::string>{"type", "version", "trusted", "observedAt"}));
    EXPECT_EQ(record["type"], "health");
    EXPECT_TRUE(record["version"].is_number_integer());
    EXPECT_EQ(record["version"], 1);
    EXPECT_TRUE(record["trusted"].is_boolean());
    EXPECT_EQ(record["trusted"], trusted);
  }
}

}  // namespace
}  // namespace callmonitor
