// The modes that write records: every line's content but its time and its session's identifier.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "process/program_run.h"

namespace callmonitor {
namespace {

using namespace support;

using Arguments = std::vector<std::string>;

// The records of a mode that has to end well. Each has to carry a time; it is taken out.
std::vector<Json> recordsOf(const Arguments& arguments) {
  const ProgramRun run = runProgram(arguments);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.status, 0);
  std::vector<Json> records = recordsIn(run.output);
  for (Json& record : records) {
    EXPECT_TRUE(record["observedAt"].is_number()) << record;
    record.erase("observedAt");
  }
  return records;
}

// The observation records of one session, whose identifier is taken out; a key that is made from it
// ends in "SESSION".
std::vector<Json> oneSession(const Arguments& arguments) {
  std::vector<Json> records = recordsOf(arguments);
  if (records.empty()) return records;
  const std::string session = records.front().value("sessionId", "");
  EXPECT_EQ(session.size(), 36U);
  for (Json& record : records) {
    EXPECT_EQ(record["sessionId"], session);
    record.erase("sessionId");
    auto key = record["callKey"].get<std::string>();
    if (key.ends_with(session)) {
      record["callKey"] = key.substr(0, key.size() - session.size()) + "SESSION";
    }
  }
  return records;
}

Json observation(const std::string& bundle, const std::string& provider, const std::string& key,
                 const std::string& title, int sequence, const std::string& state,
                 bool mediaActive = false) {
  return {{"version", 1},   {"source", "native"},         {"provider", provider},
          {"callKey", key}, {"sequence", sequence},       {"state", state},
          {"title", title}, {"mediaActive", mediaActive}, {"applicationBundleId", bundle}};
}

TEST(GenericExit, AGenericCallIsJoinedAndLeavesWithItsApplication) {
  const auto expected = [](int sequence, const std::string& state) {
    return observation("org.example.CustomCalls", "application", "application:native-SESSION",
                       "Call", sequence, state);
  };
  EXPECT_EQ(oneSession({"--generic-exit-fixture"}),
            (std::vector<Json>{expected(1, "joined"), expected(2, "left")}));
}

TEST(NativeIdentity, IsOneCallWhateverIdentityItsWindowShows) {
  const auto expected = [](int sequence, const std::string& state) {
    return observation("us.zoom.xos", "zoom", "zoom:native-SESSION", "Zoom Meeting", sequence,
                       state);
  };
  EXPECT_EQ(oneSession({"--native-identity-fixture"}),
            (std::vector<Json>{expected(1, "joined"), expected(2, "joined"), expected(3, "joined"),
                               expected(4, "left")}));
}

TEST(MediaGate, OneCallsMediaGoOnAndOffAgain) {
  const auto expected = [](int sequence, bool mediaActive) {
    return observation("com.google.Chrome", "meet", "meet:abc-defg-hij", "Synthetic meeting",
                       sequence, "joined", mediaActive);
  };
  EXPECT_EQ(oneSession({"--media-gate-fixture"}),
            (std::vector<Json>{expected(1, false), expected(2, true), expected(3, false)}));
}

TEST(ClientFixture, TwoClientsAndHealthEvenBesideALaterFlag) {
  const Json zoom{
      {"type", "client"},  {"version", 1},         {"provider", "zoom"},
      {"state", "active"}, {"lobby", false},       {"mediaActive", false},
      {"pid", 42},         {"key", "zoom:pid-42"}, {"applicationBundleId", "us.zoom.xos"}};
  const Json meet{{"type", "client"},
                  {"version", 1},
                  {"provider", "meet"},
                  {"state", "active"},
                  {"lobby", false},
                  {"mediaActive", false},
                  {"pid", 7},
                  {"key", "meet:abc-defg-hij"},
                  {"applicationBundleId", "com.google.Chrome"}};
  const Json health{{"type", "health"}, {"version", 1}, {"trusted", true}};
  for (const Arguments& arguments :
       {Arguments{"--client-fixture"}, Arguments{"--provider-root-fixture", "--client-fixture"},
        Arguments{"--client-fixture", "--provider-root-fixture"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    EXPECT_EQ(recordsOf(arguments), (std::vector<Json>{zoom, meet, health}));
  }
}

TEST(ClientScan, FiveRecordsFromACompleteScanToNone) {
  std::vector<Json> records = recordsOf({"--client-scan-fixture"});
  ASSERT_EQ(records.size(), 5U);
  for (const Json& record : records) {
    EXPECT_EQ(record["type"], "client-scan");
    EXPECT_EQ(record["version"], 1);
  }

  const Json& complete = records[0];
  EXPECT_EQ(complete["stage"], "complete");
  EXPECT_EQ(complete["provider"], "zoom");
  for (const char* shown : {"audio", "video", "start", "previewOption", "lobby"}) {
    EXPECT_EQ(complete[shown], true) << shown;
  }
  for (const char* notShown : {"join", "deadline", "truncated"}) {
    EXPECT_EQ(complete[notShown], false) << notShown;
  }
  EXPECT_EQ(complete["failedNodes"], 0);
  EXPECT_GT(complete["nodes"], 0);
  EXPECT_TRUE(complete["failedAttributes"].is_null());

  for (const std::size_t i : {1U, 2U}) {
    SCOPED_TRACE(i);
    EXPECT_EQ(records[i]["stage"], "incomplete");
    EXPECT_EQ(records[i]["provider"], "zoom");
    EXPECT_EQ(records[i]["lobby"], false);
    EXPECT_LT(records[i]["nodes"], complete["nodes"]);
  }
  EXPECT_EQ(records[1]["truncated"], true);
  EXPECT_EQ(records[1]["deadline"], false);
  EXPECT_EQ(records[2]["truncated"], false);
  EXPECT_EQ(records[2]["deadline"], true);

  EXPECT_EQ(records[3],
            (Json{{"type", "client-scan"}, {"version", 1}, {"stage", "no-front-provider"}}));
  EXPECT_EQ(records[4], (Json{{"type", "client-scan"},
                              {"version", 1},
                              {"stage", "no-focused-window"},
                              {"provider", "zoom"}}));
}

TEST(ClientScan, WritesNoTitleOfAWindow) {
  EXPECT_EQ(runProgram({"--client-scan-fixture"}).output.find("PRIVATE"), std::string::npos);
}

// The records of a call that ends, all of whose media are off: whose client shows it, under which
// key, and its states in order.
struct Ending {
  const char* scenario;
  const char* provider;
  const char* bundle;
  const char* key;
  std::vector<std::string> states;
};

void checkEnding(const Ending& ending, const Arguments& arguments) {
  SCOPED_TRACE(testing::PrintToString(arguments));
  std::vector<Json> expected;
  for (const std::string& state : ending.states) {
    const int sequence = static_cast<int>(expected.size()) + 1;
    expected.push_back(observation(ending.bundle, ending.provider, ending.key, "Synthetic meeting",
                                   sequence, state));
  }
  EXPECT_EQ(oneSession(arguments), expected);
}

const std::vector<std::string> leftAtOnce{"joined", "left"};
const std::vector<std::string> leftAfterAFlicker{"joined", "unknown", "left"};
const std::vector<std::string> undecided{"joined", "unknown"};

TEST(CallEnding, EveryScenarioEndsTheCallOfAProviderWithItsOwnRules) {
  struct Client {
    const char* provider;
    const char* bundle;
    const char* key;
  };
  for (const Client& client : {Client{"meet", "com.google.Chrome", "meet:abc-defg-hij"},
                               Client{"teams", "com.microsoft.teams", "teams:native-SESSION"},
                               Client{"zoom", "us.zoom.xos", "zoom:native-SESSION"}}) {
    for (const auto& [scenario, states] :
         {std::pair{"close-window", leftAfterAFlicker}, std::pair{"leave", leftAtOnce},
          std::pair{"host-end", leftAtOnce}}) {
      checkEnding({scenario, client.provider, client.bundle, client.key, states},
                  {"--call-ending-fixture", scenario, client.provider});
    }
  }
}

TEST(CallEnding, MeetIsTheProviderWhereNoneIsGiven) {
  for (const auto& [scenario, states] :
       {std::pair{"close-window", leftAfterAFlicker}, std::pair{"leave", leftAtOnce},
        std::pair{"host-end", leftAtOnce}}) {
    checkEnding({scenario, "meet", "com.google.Chrome", "meet:abc-defg-hij", states},
                {"--call-ending-fixture", scenario});
  }
}

TEST(CallEnding, AHostWhoEndsAMeetingIsNotBelievedOfAnotherProvider) {
  struct Client {
    const char* provider;
    const char* bundle;
  };
  for (const Client& client : {Client{"webex", "com.cisco.webexmeetingsapp"},
                               Client{"application", "org.example.CustomCalls"},
                               Client{"anything", "org.example.CustomCalls"}}) {
    const std::string key = std::string(client.provider) + ":native-SESSION";
    for (const auto& [scenario, states] :
         {std::pair{"close-window", leftAfterAFlicker}, std::pair{"leave", leftAtOnce},
          std::pair{"host-end", undecided}}) {
      checkEnding({scenario, client.provider, client.bundle, key.c_str(), states},
                  {"--call-ending-fixture", scenario, client.provider});
    }
  }
}

TEST(CallEnding, AnUnknownScenarioWritesNothingAndFails) {
  for (const Arguments& arguments :
       {Arguments{"--call-ending-fixture", "quit"}, Arguments{"--call-ending-fixture", ""},
        Arguments{"--call-ending-fixture", "Leave"}, Arguments{"--call-ending-fixture", "meet"},
        Arguments{"--call-ending-fixture", "--self-test"},
        Arguments{"--call-ending-fixture", "--call-ending-fixture", "leave"},
        Arguments{"--call-ending-fixture", "leave ", "teams"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramRun run = runProgram(arguments);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 1);
  }
}

}  // namespace
}  // namespace callmonitor
