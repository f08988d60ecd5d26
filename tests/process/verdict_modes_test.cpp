// The modes that print a verdict or a meeting key, byte for byte, and how arguments pick a mode.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "process/program_run.h"

namespace callmonitor {
namespace {

using namespace support;

using Arguments = std::vector<std::string>;

constexpr const char* selfTestVerdict =
    "Native call identity, browser evidence and lifecycle checks passed\n";
constexpr const char* webRootVerdict = "Provider web root checks passed\n";
constexpr const char* audioHelpVerdict = "Zoom Audio help fallback checks passed\n";

struct Row {
  const char* sentence;
  Arguments arguments;
  const char* output;
};

void check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    const ProgramRun run = runProgram(row.arguments);
    EXPECT_EQ(run.output, row.output);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(VerdictModes, PrintOneLineAndNothingElse) {
  check({
      {"provider web root", {"--provider-root-fixture"}, webRootVerdict},
      {"Zoom audio help", {"--zoom-audio-help-fixture"}, audioHelpVerdict},
      {"self test", {"--self-test"}, selfTestVerdict},
      {"self test among arguments that mean nothing",
       {"--help", "--Identity", "--self-test", "x"},
       selfTestVerdict},
  });
}

TEST(IdentityMode, PrintsTheKeyOfItsValue) {
  check({
      {"a meeting", {"--identity", "https://meet.google.com/ABC-DEFG-HIJ"}, "meet:abc-defg-hij\n"},
      {"no meeting", {"--identity", "https://example.org/"}, "null\n"},
      {"an empty value", {"--identity", ""}, "null\n"},
      {"a flag as value is a value", {"--identity", "--client"}, "null\n"},
      {"the first occurrence counts, and its value may be the flag again",
       {"--identity", "--identity", "https://meet.google.com/abc-defg-hij"},
       "null\n"},
  });
}

TEST(ModeOrder, IsThatOfTheFlagsNotOfTheArguments) {
  check({
      {"web root before audio help",
       {"--zoom-audio-help-fixture", "--provider-root-fixture"},
       webRootVerdict},
      {"audio help before the self test",
       {"--self-test", "--zoom-audio-help-fixture"},
       audioHelpVerdict},
      {"audio help before client scans",
       {"--client-scan-fixture", "--zoom-audio-help-fixture"},
       audioHelpVerdict},
      {"identity before media gate",
       {"--media-gate-fixture", "--identity", "https://example.org/"},
       "null\n"},
      {"identity before a call's ending",
       {"--call-ending-fixture", "leave", "--identity", "x"},
       "null\n"},
      {"web root before the value of identity",
       {"--identity", "--provider-root-fixture"},
       webRootVerdict},
  });
}

TEST(ModeOrder, AFlagThatLacksItsValueIsPassedOver) {
  check({
      {"identity at the end", {"--self-test", "--identity"}, selfTestVerdict},
      {"call ending at the end", {"--self-test", "--call-ending-fixture"}, selfTestVerdict},
  });
}

// A record's kind alone proves that this is monitoring; what it says depends on the desktop.
void expectFirstOfMonitoring(const Json& record) {
  const std::string type = record.value("type", "");
  const Json trusted = record.value("trusted", Json());
  const Json stage = record.value("stage", Json());
  if (desktopIsHidden && type == "health") {
    EXPECT_EQ(trusted, false) << record;
  } else if (desktopIsHidden) {
    EXPECT_EQ(type, "client-scan") << record;
    EXPECT_EQ(stage, "untrusted") << record;
  } else if (record.contains("source")) {
    EXPECT_EQ(record["source"], "native") << record;
  } else {
    EXPECT_TRUE(type == "health" || type == "client-scan" || type == "client") << record;
    EXPECT_TRUE(type != "health" || trusted.is_boolean()) << record;
    EXPECT_TRUE(type != "client-scan" || stage.is_string()) << record;
  }
}

TEST(ModeOrder, ALoneFlagWithoutItsValueMonitors) {
  for (const Arguments& arguments :
       {Arguments{}, Arguments{"--identity"}, Arguments{"--call-ending-fixture"},
        Arguments{"--SELF-TEST"}, Arguments{"--self-test=1"}, Arguments{"--help"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramRun run = runToFirstLine(arguments);
    EXPECT_EQ(run.errors, "");
    const Json record = Json::parse(run.output, nullptr, /*allow_exceptions=*/false);
    ASSERT_TRUE(record.is_object());
    expectFirstOfMonitoring(record);
  }
}

}  // namespace
}  // namespace callmonitor
