// What the record of a look at the client in front holds.
#include <gtest/gtest.h>

#include "platform/scripted/desktop.h"
#include "support/emitted_records.h"
#include "tracking/records.h"
#include "tracking/writer.h"

namespace callmonitor {
namespace {

using namespace support;

Json written(const Record& record) {
  const std::vector<Json> records = recordsWrittenBy([&] { emit(record); });
  EXPECT_EQ(records.size(), 1U);
  return records.empty() ? Json() : records.front();
}

Evidence showing(const std::vector<std::string>& controls) {
  Evidence evidence;
  evidence.controls = controls;
  return evidence;
}

TEST(ClientScanRecord, WithoutAProviderItHoldsTheStageAlone) {
  for (const auto& evidence : {std::optional<Evidence>(), std::optional(showing({"Mute"}))}) {
    const Json record = written(serializedClientScan("untrusted", std::nullopt, evidence));
    EXPECT_EQ(keysOf(record), (std::set<std::string>{"type", "version", "stage", "observedAt"}));
    EXPECT_EQ(record["type"], "client-scan");
    EXPECT_TRUE(record["version"].is_number_integer());
    EXPECT_EQ(record["version"], 1);
    EXPECT_EQ(record["stage"], "untrusted");
    EXPECT_TRUE(record["observedAt"].is_number_float());
  }
}

TEST(ClientScanRecord, WithoutEvidenceItHoldsTheProviderBesides) {
  const Json record = written(serializedClientScan("no-focused-window", "zoom", std::nullopt));
  EXPECT_EQ(keysOf(record),
            (std::set<std::string>{"type", "version", "stage", "observedAt", "provider"}));
  EXPECT_EQ(record["provider"], "zoom");
}

TEST(ClientScanRecord, WithEvidenceItTellsHowFarTheScanCame) {
  Evidence evidence;
  evidence.nodes = 1600;
  evidence.failedNodes = 3;
  evidence.failedAttributes = {"AXDescription:-25200", "AXRole:-25204"};
  evidence.failedControlHints = {"audio-title:empty-id"};
  evidence.deadline = true;
  const Json record = written(serializedClientScan("incomplete", "zoom", evidence));
  EXPECT_EQ(keysOf(record),
            (std::set<std::string>{"type", "version", "stage", "observedAt", "provider", "nodes",
                                   "failedNodes", "failedAttributes", "failedControlHints",
                                   "deadline", "truncated", "audio", "video", "join", "start",
                                   "previewOption", "lobby"}));
  EXPECT_TRUE(record["nodes"].is_number_integer());
  EXPECT_EQ(record["nodes"], 1600);
  EXPECT_TRUE(record["failedNodes"].is_number_integer());
  EXPECT_EQ(record["failedNodes"], 3);
  EXPECT_EQ(record["failedAttributes"], (Json{"AXDescription:-25200", "AXRole:-25204"}));
  EXPECT_EQ(record["failedControlHints"], Json::array({"audio-title:empty-id"}));
  EXPECT_EQ(record["deadline"], true);
  EXPECT_EQ(record["truncated"], false);
  evidence.deadline = false;
  evidence.truncated = true;
  const Json truncated = written(serializedClientScan("incomplete", "zoom", evidence));
  EXPECT_EQ(truncated["deadline"], false);
  EXPECT_EQ(truncated["truncated"], true);
}

TEST(ClientScanRecord, AnEmptyListIsNull) {
  const Json record = written(serializedClientScan("complete", "zoom", Evidence()));
  EXPECT_TRUE(record.contains("failedAttributes") && record["failedAttributes"].is_null());
  EXPECT_TRUE(record.contains("failedControlHints") && record["failedControlHints"].is_null());
}

// What each control tells, by provider.
struct Row {
  const char* sentence;
  const char* provider;
  std::vector<std::string> controls;
  std::set<std::string> offers;  // which of the six flags are true
};

TEST(ClientScanRecord, TellsWhatTheControlsOffer) {
  const std::vector<Row> rows{
      {"no controls offer nothing", "zoom", {}, {}},
      {"a microphone offers audio", "teams", {"Microphone options"}, {"audio"}},
      {"a mute button offers audio", "meet", {"Unmute"}, {"audio"}},
      {"an audio toggle that is on offers audio", "teams", {"Audio, turn off"}, {"audio"}},
      {"an audio toggle that is off offers audio",
       "teams",
       {"Audio, turn on, currently muted"},
       {"audio"}},
      {"the word audio alone offers audio in Zoom", "zoom", {"Audio"}, {"audio"}},
      {"the word audio alone offers nothing in Teams", "teams", {"Audio"}, {}},
      {"the word audio alone offers nothing in Meet", "meet", {"Audio"}, {}},
      {"a longer label than audio offers nothing in Zoom", "zoom", {"Audio settings"}, {}},
      {"a camera offers video", "meet", {"Turn on CAMERA"}, {"video"}},
      {"a video toggle offers video", "teams", {"Video, turn on, currently off"}, {"video"}},
      {"join is a join button", "meet", {"Join"}, {"join"}},
      {"join now is a join button", "meet", {"Join  now"}, {"join"}},
      {"join meeting is a join button", "zoom", {"Join meeting"}, {"join"}},
      {"join call is a join button", "teams", {"join call"}, {"join"}},
      {"ask to join is a join button", "meet", {" Ask to join "}, {"join"}},
      {"join now with a shortcut is a join button", "meet", {"Join now (\u2318 + J)"}, {"join"}},
      {"join the meeting is no join button", "meet", {"Join the meeting"}, {}},
      {"start is told for every provider", "teams", {"Start"}, {"start"}},
      {"a longer label than start is not start", "zoom", {"Start meeting"}, {}},
      {"the preview option is told for every provider",
       "teams",
       {"Always show this preview when joining"},
       {"previewOption"}},
      {"a label that holds the preview option tells it",
       "zoom",
       {"\u2713 always show  this preview when joining (on)"},
       {"previewOption"}},
      {"audio, video and join are a lobby",
       "teams",
       {"Audio, turn on, currently muted", "Video, turn on, currently off", "Join now"},
       {"audio", "video", "join", "lobby"}},
      {"without join there is no lobby",
       "teams",
       {"Audio, turn on, currently muted", "Video, turn on, currently off"},
       {"audio", "video"}},
      {"the preview of a Zoom host is a lobby",
       "zoom",
       {"Audio", "Video", "Start", "Always show this preview when joining"},
       {"audio", "video", "start", "previewOption", "lobby"}},
      {"a call is no lobby",
       "zoom",
       {"Leave", "Mute", "Video", "Join"},
       {"audio", "video", "join"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    const Json record =
        written(serializedClientScan("complete", row.provider, showing(row.controls)));
    for (const char* flag : {"audio", "video", "join", "start", "previewOption", "lobby"}) {
      EXPECT_EQ(record[flag], row.offers.contains(flag)) << flag;
    }
  }
}

TEST(ClientScanRecord, NoticesOfferNothing) {
  Evidence evidence;
  evidence.notices = {"Join now", "Mute", "Start"};
  const Json record = written(serializedClientScan("complete", "zoom", evidence));
  for (const char* flag : {"audio", "video", "join", "start", "previewOption", "lobby"}) {
    EXPECT_EQ(record[flag], false) << flag;
  }
}

}  // namespace
}  // namespace callmonitor
