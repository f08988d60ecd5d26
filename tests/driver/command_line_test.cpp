// Which mode an argument list picks.
#include "command_line.h"

#include <gtest/gtest.h>

namespace callmonitor {
namespace {

using Arguments = std::vector<std::string>;

struct Row {
  const char* sentence;
  Arguments arguments;
  Mode mode;
  Arguments values;
};

void check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    const CommandLine chosen = commandLine(row.arguments);
    EXPECT_EQ(chosen.mode, row.mode);
    if (!row.values.empty()) {
      EXPECT_EQ(chosen.values, row.values);
    }
  }
}

TEST(CommandLineModes, EachFlagPicksItsMode) {
  check({
      {"generic exit", {"p", "--generic-exit-fixture"}, Mode::genericExitFixture, {}},
      {"native identity", {"p", "--native-identity-fixture"}, Mode::nativeIdentityFixture, {}},
      {"client", {"p", "--client-fixture"}, Mode::clientFixture, {}},
      {"provider root", {"p", "--provider-root-fixture"}, Mode::providerRootFixture, {}},
      {"Zoom audio help", {"p", "--zoom-audio-help-fixture"}, Mode::zoomAudioHelpFixture, {}},
      {"client scan", {"p", "--client-scan-fixture"}, Mode::clientScanFixture, {}},
      {"identity", {"p", "--identity", "x"}, Mode::identity, {"x"}},
      {"media gate", {"p", "--media-gate-fixture"}, Mode::mediaGateFixture, {}},
      {"call ending", {"p", "--call-ending-fixture", "leave"}, Mode::callEndingFixture, {"leave"}},
      {"call ending with a provider",
       {"p", "--call-ending-fixture", "leave", "teams"},
       Mode::callEndingFixture,
       {"leave", "teams"}},
      {"self test", {"p", "--self-test"}, Mode::selfTest, {}},
  });
}

TEST(CommandLineModes, WhatMatchesNothingMonitors) {
  check({
      {"no arguments at all", {}, Mode::monitoring, {}},
      {"the program alone", {"call-monitor"}, Mode::monitoring, {}},
      {"an unknown flag", {"p", "--help"}, Mode::monitoring, {}},
      {"a flag without its hyphens", {"p", "self-test"}, Mode::monitoring, {}},
      {"a flag in another case", {"p", "--Self-Test"}, Mode::monitoring, {}},
      {"a flag with something behind it", {"p", "--self-test "}, Mode::monitoring, {}},
      {"a value inside the flag's own argument",
       {"p", "--identity=https://meet.google.com/abc-defg-hij"},
       Mode::monitoring,
       {}},
      {"an empty argument", {"p", ""}, Mode::monitoring, {}},
  });
}

TEST(CommandLineModes, TheFixedOrderDecidesBetweenFlagsNotTheirOrderAsGiven) {
  // Each flag before the next of the order, given the other way round.
  const std::vector<std::pair<Arguments, Mode>> order{
      {{"--generic-exit-fixture"}, Mode::genericExitFixture},
      {{"--native-identity-fixture"}, Mode::nativeIdentityFixture},
      {{"--client-fixture"}, Mode::clientFixture},
      {{"--provider-root-fixture"}, Mode::providerRootFixture},
      {{"--zoom-audio-help-fixture"}, Mode::zoomAudioHelpFixture},
      {{"--client-scan-fixture"}, Mode::clientScanFixture},
      {{"--identity", "x"}, Mode::identity},
      {{"--media-gate-fixture"}, Mode::mediaGateFixture},
      {{"--call-ending-fixture", "leave"}, Mode::callEndingFixture},
      {{"--self-test"}, Mode::selfTest},
  };
  for (std::size_t first = 0; first < order.size(); ++first) {
    for (std::size_t second = first + 1; second < order.size(); ++second) {
      SCOPED_TRACE(order[first].first.front() + " before " + order[second].first.front());
      Arguments arguments{"p"};
      for (const Arguments& given : {order[second].first, order[first].first}) {
        arguments.insert(arguments.end(), given.begin(), given.end());
      }
      EXPECT_EQ(commandLine(arguments).mode, order[first].second);
    }
  }
}

TEST(CommandLineModes, AFlagThatWantsAValueCountsOnlyWithOne) {
  check({
      {"a trailing identity monitors", {"p", "--identity"}, Mode::monitoring, {}},
      {"a trailing call ending monitors", {"p", "--call-ending-fixture"}, Mode::monitoring, {}},
      {"a trailing identity lets the next flag of the order decide",
       {"p", "--self-test", "--identity"},
       Mode::selfTest,
       {}},
      {"a trailing call ending lets the self test decide",
       {"p", "--self-test", "--call-ending-fixture"},
       Mode::selfTest,
       {}},
  });
}

TEST(CommandLineModes, TheValueIsTheNextArgumentWhateverItIs) {
  check({
      {"another flag", {"p", "--identity", "--self-test"}, Mode::identity, {"--self-test"}},
      {"the flag itself", {"p", "--identity", "--identity"}, Mode::identity, {"--identity"}},
      {"an empty value", {"p", "--identity", ""}, Mode::identity, {""}},
      {"the first occurrence counts",
       {"p", "--identity", "a", "--identity", "b"},
       Mode::identity,
       {"a", "--identity", "b"}},
      {"an unknown scenario is still a scenario",
       {"p", "--call-ending-fixture", "explode"},
       Mode::callEndingFixture,
       {"explode"}},
      {"a flag of a later place as scenario",
       {"p", "--call-ending-fixture", "--self-test"},
       Mode::callEndingFixture,
       {"--self-test"}},
  });
  EXPECT_EQ(commandLine({"p", "--identity", "--client-fixture"}).mode, Mode::clientFixture)
      << "a value that is a flag of an earlier place still picks that mode";
}

TEST(CommandLineModes, TheProgramsPathTakesPart) {
  check({
      {"a flag", {"--self-test"}, Mode::selfTest, {}},
      {"a flag with the first argument as its value", {"--identity", "x"}, Mode::identity, {"x"}},
  });
}

}  // namespace
}  // namespace callmonitor
