// How records reach the stream, and which are held back.
#include "tracking/writer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <limits>

#include "platform/scripted/desktop.h"
#include "support/emitted_records.h"
#include "tracking/records.h"

namespace callmonitor {
namespace {

using namespace support;
using scripted::desktop;

using Lines = std::vector<std::string>;

const std::string brokenText = "\xff";

struct Writer : testing::Test {
  Writer() { scripted::reset(); }
};

TEST_F(Writer, ARecordIsOneCompactLineOfJson) {
  const Record record{{"version", std::int64_t{1}}, {"trusted", true}, {"stage", "complete"}};
  const Lines lines = linesWrittenBy([&] { emit(record); });
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].find_first_of(" \t\n"), std::string::npos);
  EXPECT_EQ(Json::parse(lines[0]),
            (Json{{"version", 1}, {"trusted", true}, {"stage", "complete"}}));
}

TEST_F(Writer, EverySlashIsEscaped) {
  const Lines lines = linesWrittenBy([] { emit({{"title", "a/b\\/c // https://x"}}); });
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0], R"({"title":"a\/b\\\/c \/\/ https:\/\/x"})");
  EXPECT_EQ(Json::parse(lines[0])["title"], "a/b\\/c // https://x");
}

TEST_F(Writer, ALineFeedInATextDoesNotBreakTheLine) {
  const auto records = recordsWrittenBy([] { emit({{"title", "a\nb\u2028\"c\""}}); });
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["title"], "a\nb\u2028\"c\"");
}

TEST_F(Writer, ARecordThatJsonCannotHoldIsDroppedAndTheNextIsWritten) {
  const auto records = recordsWrittenBy([] {
    emit({{"title", brokenText}});
    emit({{"failedAttributes", std::vector<std::string>{"fine", brokenText}}});
    emit({{"observedAt", std::nan("")}});
    emit({{"observedAt", std::numeric_limits<double>::infinity()}});
    emit({{"title", "fine"}});
  });
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0]["title"], "fine");
}

off_t bytesOnStandardOutput() {
  struct stat status = {};
  return fstat(STDOUT_FILENO, &status) == 0 ? status.st_size : -1;
}

TEST_F(Writer, EachRecordHasLeftTheProgramWhenItIsWritten) {
  WriterGates gates;
  testing::internal::CaptureStdout();  // standard output is a file now
  emit(serializedHealth(true));
  const off_t afterHealth = bytesOnStandardOutput();
  emitClient(gates, "zoom", "k", 1, std::nullopt, false, false);
  const off_t afterClient = bytesOnStandardOutput();
  emitClientScan(gates, serializedClientScan("untrusted", std::nullopt, std::nullopt));
  const off_t afterScan = bytesOnStandardOutput();
  const auto all = static_cast<off_t>(testing::internal::GetCapturedStdout().size());
  EXPECT_GT(afterHealth, 0);
  EXPECT_GT(afterClient, afterHealth);
  EXPECT_GT(afterScan, afterClient);
  EXPECT_EQ(afterScan, all);
}

TEST_F(Writer, TheGatesStartOpen) {
  const WriterGates gates;
  EXPECT_TRUE(gates.clientEmittedAt.empty());
  EXPECT_EQ(gates.lastClientScanState, "");
  EXPECT_EQ(gates.lastClientScanAt, -std::numeric_limits<double>::infinity());
}

// Client records.

struct ClientGate : Writer {
  WriterGates gates;

  // Whether this report of a client is written at this uptime.
  bool written(double uptime, const std::string& key, bool mediaActive = false, bool lobby = false,
               std::int32_t pid = 42, const std::string& provider = "meet") {
    desktop().uptime = uptime;
    return !linesWrittenBy([&] {
              emitClient(gates, provider, key, pid, "com.google.Chrome", mediaActive, lobby);
            }).empty();
  }
};

TEST_F(ClientGate, AClientIsWrittenAsItsRecord) {
  const auto records = recordsWrittenBy(
      [&] { emitClient(gates, "meet", "meet:abc-defg-hij", 7, "com.google.Chrome", true, false); });
  ASSERT_EQ(records.size(), 1U);
  const auto expected = recordsWrittenBy([&] {
    emit(serializedClient("meet", "meet:abc-defg-hij", 7, "com.google.Chrome", true, false));
  });
  EXPECT_EQ(records, expected);
}

TEST_F(ClientGate, AnUnchangedClientIsRepeatedOnceSixtySecondsHavePassed) {
  EXPECT_TRUE(written(1000, "k"));
  EXPECT_FALSE(written(1000, "k"));
  EXPECT_FALSE(written(std::nextafter(1060.0, 0.0), "k"));
  EXPECT_TRUE(written(1060, "k"));
  EXPECT_FALSE(written(1119.9, "k")) << "counted from the last record that was written";
  EXPECT_TRUE(written(1120, "k"));
}

TEST_F(ClientGate, AReportThatIsHeldBackDoesNotPutOffTheNext) {
  EXPECT_TRUE(written(1000, "k"));
  EXPECT_FALSE(written(1059, "k"));
  EXPECT_TRUE(written(1060, "k"));
}

TEST_F(ClientGate, AChangeOfEitherFlagIsWrittenAtOnce) {
  EXPECT_TRUE(written(1000, "k", false, false));
  EXPECT_TRUE(written(1000, "k", true, false));
  EXPECT_TRUE(written(1000, "k", true, true));
  EXPECT_FALSE(written(1000, "k", true, true));
  EXPECT_TRUE(written(1000, "k", false, true));
  EXPECT_TRUE(written(1000, "k", false, false));
}

TEST_F(ClientGate, ClientsOfOneKeyShareItsGate) {
  EXPECT_TRUE(written(1000, "k", false, false, 1, "meet"));
  EXPECT_FALSE(written(1001, "k", false, false, 2, "meet"));
  EXPECT_FALSE(written(1001, "k", false, false, 1, "zoom"));
  EXPECT_TRUE(written(1001, "other", false, false, 1, "meet"));
}

TEST_F(ClientGate, TheMemoryHoldsWhenAndWithWhichFlags) {
  written(1000, "k", true, false);
  ASSERT_EQ(gates.clientEmittedAt.size(), 1U);
  const ClientEmission& emission = gates.clientEmittedAt.at("k");
  EXPECT_EQ(emission.at, 1000);
  EXPECT_TRUE(emission.mediaActive);
  EXPECT_FALSE(emission.lobby);
}

// Fills the memory with this many keys, all written at `uptime`.
void fill(WriterGates& gates, int count, double uptime) {
  for (int i = 0; i < count; ++i) {
    gates.clientEmittedAt["old " + std::to_string(i)] = {uptime, false, false};
  }
}

TEST_F(ClientGate, MemoryBelow257KeysIsKeptHoweverOld) {
  fill(gates, 255, 0);
  EXPECT_TRUE(written(100000, "new"));
  EXPECT_EQ(gates.clientEmittedAt.size(), 256U);
}

TEST_F(ClientGate, At257KeysThoseOf600SecondsAndMoreAreForgotten) {
  fill(gates, 256, 1000);
  gates.clientEmittedAt["old 0"].at = std::nextafter(1000.0, 2000.0);
  EXPECT_TRUE(written(1600, "new"));
  EXPECT_EQ(gates.clientEmittedAt.size(), 2U);
  EXPECT_TRUE(gates.clientEmittedAt.contains("old 0")) << "younger than 600 s";
  EXPECT_TRUE(gates.clientEmittedAt.contains("new"));
}

TEST_F(ClientGate, YoungerKeysStayHoweverMany) {
  fill(gates, 1000, 1000);
  EXPECT_TRUE(written(1599, "new"));
  EXPECT_EQ(gates.clientEmittedAt.size(), 1001U);
}

TEST_F(ClientGate, AReportOfAnOldKeyRenewsItBeforeOthersAreForgotten) {
  fill(gates, 257, 1000);
  EXPECT_TRUE(written(5000, "old 7"));
  ASSERT_EQ(gates.clientEmittedAt.size(), 1U);
  EXPECT_TRUE(gates.clientEmittedAt.contains("old 7"));
}

TEST_F(ClientGate, AClientThatJsonCannotHoldCountsAsWritten) {
  EXPECT_FALSE(written(1000, brokenText));
  EXPECT_TRUE(gates.clientEmittedAt.contains(brokenText));
}

// Client-scan records.

struct ClientScanGate : Writer {
  WriterGates gates;

  bool written(double uptime, const Record& record) {
    desktop().uptime = uptime;
    return !linesWrittenBy([&] { emitClientScan(gates, record); }).empty();
  }
};

Record stage(const std::string& name) {
  return serializedClientScan(name, std::nullopt, std::nullopt);
}

Record scan(int nodes, int failedNodes, const std::vector<std::string>& controls = {}) {
  Evidence evidence;
  evidence.nodes = nodes;
  evidence.failedNodes = failedNodes;
  evidence.controls = controls;
  return serializedClientScan("complete", "zoom", evidence);
}

TEST_F(ClientScanGate, TheFirstScanIsWrittenWhole) {
  desktop().uptime = 0;
  const Record record = scan(12, 3);
  const auto records = recordsWrittenBy([&] { emitClientScan(gates, record); });
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records, recordsWrittenBy([&] { emit(record); }));
  EXPECT_EQ(records[0]["nodes"], 12);
  EXPECT_EQ(records[0]["failedNodes"], 3);
  EXPECT_TRUE(records[0].contains("observedAt"));
}

TEST_F(ClientScanGate, AnyScanWithinOneSecondIsHeldBack) {
  EXPECT_TRUE(written(1000, stage("untrusted")));
  EXPECT_FALSE(written(std::nextafter(1001.0, 0.0), stage("no-front-provider")));
  EXPECT_TRUE(written(1001, stage("no-front-provider")));
}

TEST_F(ClientScanGate, AScanThatIsHeldBackIsNotRemembered) {
  EXPECT_TRUE(written(1000, stage("untrusted")));
  EXPECT_FALSE(written(1000.5, stage("no-front-provider")));
  EXPECT_FALSE(written(1001.2, stage("untrusted"))) << "still says what was last written";
  EXPECT_TRUE(written(1001.5, stage("no-front-provider")));
}

TEST_F(ClientScanGate, AnUnchangedScanIsRepeatedOnceThirtySecondsHavePassed) {
  EXPECT_TRUE(written(1000, stage("untrusted")));
  EXPECT_FALSE(written(std::nextafter(1030.0, 0.0), stage("untrusted")));
  EXPECT_TRUE(written(1030, stage("untrusted")));
  EXPECT_FALSE(written(1059.9, stage("untrusted")));
}

TEST_F(ClientScanGate, CountersAndTimeAreNothingNew) {
  EXPECT_TRUE(written(1000, scan(10, 0)));
  desktop().wallClock += 5;
  EXPECT_FALSE(written(1005, scan(11, 0)));
  EXPECT_FALSE(written(1006, scan(10, 4)));
  EXPECT_TRUE(written(1007, scan(10, 0, {"Start"}))) << "another offer is something new";
  EXPECT_TRUE(written(1008, stage("untrusted")));
}

TEST_F(ClientScanGate, WhatTheLastScanSaidIsRememberedWithoutCountersAndTime) {
  written(1000, stage("untrusted"));
  EXPECT_EQ(gates.lastClientScanState, R"({"stage":"untrusted","type":"client-scan","version":1})");
  EXPECT_EQ(gates.lastClientScanAt, 1000);
  written(1001, scan(5, 6));
  const Json said = Json::parse(gates.lastClientScanState);
  EXPECT_FALSE(said.contains("nodes") || said.contains("failedNodes") ||
               said.contains("observedAt"));
  EXPECT_TRUE(said.contains("failedAttributes"));
}

TEST_F(ClientScanGate, AScanWhoseContentJsonCannotHoldLeavesNoTrace) {
  Record broken = stage("untrusted");
  broken["provider"] = brokenText;
  EXPECT_FALSE(written(1000, broken));
  EXPECT_EQ(gates.lastClientScanState, "");
  EXPECT_TRUE(written(1000, stage("untrusted"))) << "the gate is still open";
}

TEST_F(ClientScanGate, AScanThatFailsOnlyInItsTimeCountsAsWritten) {
  Record broken = stage("untrusted");
  broken["observedAt"] = std::nan("");
  EXPECT_FALSE(written(1000, broken));
  EXPECT_EQ(gates.lastClientScanAt, 1000);
  EXPECT_FALSE(written(1029, stage("untrusted")));
  EXPECT_TRUE(written(1030, stage("untrusted")));
}

}  // namespace
}  // namespace callmonitor
