// A stream is told in short without losing what matters.
#include "scenarios/story.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace callmonitor::scenarios {
namespace {

using Json = nlohmann::json;
using Lines = std::vector<std::string>;

std::string health(double second, bool trusted = true) {
  return Json{
      {"type", "health"}, {"version", 1}, {"trusted", trusted}, {"observedAt", second * 1000}}
      .dump();
}

Json call(const std::string& session, int sequence, const std::string& state = "joined") {
  return {{"version", 1},          {"source", "native"},   {"provider", "meet"},
          {"callKey", "meet:abc"}, {"sessionId", session}, {"sequence", sequence},
          {"state", state},        {"title", "Standup"},   {"mediaActive", false},
          {"observedAt", 1.0}};
}

// The story without the width of its columns.
Lines told(const Lines& stream) {
  std::string text;
  for (const std::string& line : story(stream, 0)) text += line + "\n";
  return tellingLines(text);
}

TEST(Story, WhatIsSaidInCyclesRunningIsToldOnce) {
  EXPECT_EQ(told({health(0), health(0.5), health(1.5)}), Lines{"0s..1.5s 3x trusted"});
  EXPECT_EQ(told({health(0), health(1, false), health(2)}),
            (Lines{"0s trusted", "1s not trusted", "2s trusted"}));
}

TEST(Story, SequencesAreToldAsARangeAndAGapBreaksIt) {
  EXPECT_EQ(told({call("u", 1).dump(), health(0), call("u", 2).dump(), health(1)}),
            (Lines{"0s..1s 2x S1 joined 1..2 meet:abc \"Standup\"", "0s..1s 2x trusted"}));
  EXPECT_EQ(told({call("u", 1).dump(), health(0), call("u", 3).dump(), health(1)}),
            (Lines{"0s S1 joined 1 meet:abc \"Standup\"", "0s..1s 2x trusted",
                   "1s S1 joined 3 meet:abc \"Standup\""}));
}

TEST(Story, EachSessionHasAShortNameOfItsOwn) {
  EXPECT_EQ(told({call("u", 1).dump(), call("v", 1).dump(), health(0), call("w", 1).dump(),
                  call("v", 2, "left").dump(), health(1)}),
            (Lines{"0s S1 joined 1 meet:abc \"Standup\"", "0s S2 joined 1 meet:abc \"Standup\"",
                   "0s..1s 2x trusted", "1s S3 joined 1 meet:abc \"Standup\"",
                   "1s S2 left 2 meet:abc \"Standup\""}));
}

TEST(Story, EverythingThatAnObservationMayHoldIsTold) {
  Json record = call("u", 1);
  record["mediaActive"] = true;
  record["applicationBundleId"] = "com.google.Chrome";
  record["screenWindowId"] = 7;
  record["title"] = "a \"b\"";
  EXPECT_EQ(told({record.dump(), health(0)}).front(),
            "0s S1 joined 1 meet:abc \"a \\\"b\\\"\" media com.google.Chrome window=7");
  record["provider"] = "zoom";
  EXPECT_EQ(
      told({record.dump(), health(0)}).front(),
      "0s S1 joined 1 meet:abc \"a \\\"b\\\"\" provider=zoom media com.google.Chrome window=7");
}

TEST(Story, RandomPartsOfKeysAreReplaced) {
  Json record = call("u", 1);
  record["provider"] = "zoom";
  record["callKey"] = "zoom:native-u";
  EXPECT_EQ(told({record.dump(), health(0)}).front(), "0s S1 joined 1 zoom:native-S1 \"Standup\"");
  record["callKey"] = "zoom:native-v";
  EXPECT_EQ(told({record.dump(), health(0)}).front(),
            "0s S1 joined 1 zoom:native-FOREIGN \"Standup\"");
}

TEST(Story, ClientsAndScansAreTold) {
  const Json client{
      {"type", "client"},      {"version", 1},      {"provider", "zoom"},
      {"key", "zoom:lobby-u"}, {"state", "active"}, {"mediaActive", true},
      {"lobby", true},         {"pid", 42},         {"applicationBundleId", "us.zoom.xos"}};
  const Json scan{{"type", "client-scan"},
                  {"version", 1},
                  {"stage", "incomplete"},
                  {"provider", "zoom"},
                  {"nodes", 12},
                  {"failedNodes", 2},
                  {"failedAttributes", {"AXRole:-25204", "AXTitle:-25200"}},
                  {"failedControlHints", {"title-audio,audio-id"}},
                  {"deadline", true},
                  {"truncated", false},
                  {"audio", true},
                  {"lobby", false}};
  EXPECT_EQ(told({scan.dump(), client.dump(), health(0)}),
            (Lines{"0s scan incomplete zoom audio deadline failedNodes=2 "
                   "failed=AXRole:-25204,AXTitle:-25200 hints=title-audio,audio-id",
                   "0s client zoom:lobby-L1 media lobby pid=42 us.zoom.xos", "0s trusted"}));
}

TEST(Story, WhatIsNoStreamIsToldAsWrong) {
  EXPECT_EQ(told({"hello", health(0)}), (Lines{"0s trusted", "WRONG: not a record: hello"}));
  EXPECT_EQ(told({health(0), call("u", 1).dump()}),
            (Lines{"0s trusted", "WRONG: the last cycle has no health record"}));
  EXPECT_EQ(told({R"({"type":"news","version":1})", health(0)}).front(),
            "0s WRONG: a record of type news");
}

TEST(TellingLines, CommentsAndBlanksDoNotCount) {
  EXPECT_EQ(tellingLines("# why\n\n  0s   2x \ttrusted  \n#\n1s  x\n"),
            (Lines{"0s 2x trusted", "1s x"}));
}

}  // namespace
}  // namespace callmonitor::scenarios
