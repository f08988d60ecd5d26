#include "platform/linux/stream_claim.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

TEST(ClaimIn, ReadsWhatBothServersPassOn) {
  struct Case {
    std::string name;
    SoundProperties stream;
    SoundProperties client;
    StreamClaim expected;
  };
  const std::vector<Case> cases{
      {"nothing is said", {}, {}, {}},
      {"as PulseAudio's library writes it",
       {{"application.process.host", "vm"},
        {"application.process.machine_id", "3d12"},
        {"application.process.binary", "pacat"}},
       {},
       {"vm", "3d12", "pacat", ""}},
      {"as PipeWire's service passes it on",
       {{"application.process.host", "vm"},
        {"application.process.machine-id", "3d12"},
        {"application.process.binary", "pacat"}},
       {},
       {"vm", "3d12", "pacat", ""}},
      {"the stream does not say, and its client does",
       {{"application.process.binary", "chromium"}},
       {{"application.process.host", "vm"}, {"application.process.binary", "other"}},
       {"vm", "", "chromium", ""}},
      {"the server vouches for the sandbox of a client, not of a stream",
       {{"pipewire.access.portal.app_id", "org.example.Liar"}},
       {{"pipewire.access.portal.app_id", "us.zoom.Zoom"}},
       {"", "", "", "us.zoom.Zoom"}},
  };
  for (const Case& each : cases) {
    const StreamClaim claim = claimIn(each.stream, each.client);
    EXPECT_EQ(claim.host, each.expected.host) << each.name;
    EXPECT_EQ(claim.machine, each.expected.machine) << each.name;
    EXPECT_EQ(claim.binary, each.expected.binary) << each.name;
    EXPECT_EQ(claim.flatpak, each.expected.flatpak) << each.name;
  }
}

TEST(MayBe, LetsNamesDifferInTheirVersionOnly) {
  struct Case {
    std::string name;
    std::string binary;
    ProcessNames names;
    bool expected;
  };
  const std::vector<Case> cases{
      {"the same name", "chromium", {"chromium"}, true},
      {"any of several names", "player", {"python3.11", "player"}, true},
      {"another name", "pacat", {"sleep"}, false},
      {"a name that is longer than the process's", "pipewire-pulse", {"pipewire"}, false},
      {"a name that is shorter than the process's", "chrome", {"chromedriver"}, false},
      {"the process's name has a version", "python3", {"python3.11"}, true},
      {"the claimed name has a version", "python3.11", {"python3"}, true},
      {"two versions", "python3.11", {"python3.12"}, false},
      {"the kernel's short name", "a-program-with-a-long-name", {"a-program-with-"}, true},
      {"a name that only begins as the other", "a-program-with", {"a-program"}, false},
      {"the client does not say", "", {"sleep"}, true},
      {"nothing of the process may be read", "pacat", {}, false},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(mayBe(each.binary, each.names), each.expected) << each.name;
  }
}

TEST(BeliefIn, IsGivenWhereTheMachineAndTheProgramFit) {
  using enum Belief;
  struct Case {
    std::string name;
    StreamClaim claim;
    ProcessNames names;
    Belief expected;
  };
  const ProcessNames pacat{"pacat"};
  const std::vector<Case> cases{
      {"all of it fits", {"vm", "id", "pacat", ""}, pacat, process},
      {"nothing is claimed", {}, pacat, process},
      {"nothing is claimed, and there is no such process", {}, {}, unknown},
      {"the program is another one", {"vm", "id", "zoom", ""}, pacat, unknown},
      {"there is no such process", {"vm", "id", "pacat", ""}, {}, unknown},
      {"another machine of the same name", {"vm", "other", "pacat", ""}, pacat, nobody},
      {"another machine that does not tell its id", {"other", "", "pacat", ""}, pacat, nobody},
      {"another machine, no such process here", {"other", "other", "zoom", ""}, {}, nobody},
      {"this machine under the name that it had before",
       {"old", "id", "pacat", ""},
       pacat,
       process},
      {"a copy of this machine", {"copy", "id", "zoom", ""}, pacat, nobody},
  };
  const Machine here{"vm", "id"};
  for (const Case& each : cases) {
    EXPECT_EQ(beliefIn(each.claim, here, each.names), each.expected) << each.name;
  }
  EXPECT_EQ(beliefIn({"vm", "other", "pacat", ""}, {"vm", ""}, pacat), process)
      << "this machine's id is not known";
  EXPECT_EQ(beliefIn({"other", "other", "pacat", ""}, {"vm", ""}, pacat), nobody)
      << "this machine's id is not known, and its name is another";
}

TEST(ProcessNames, AreThoseOfALivingProcess) {
  EXPECT_TRUE(mayBe("linux_tests", processNames(getpid())));
  EXPECT_TRUE(processNames(std::numeric_limits<std::int32_t>::max()).empty());
}

}  // namespace
}  // namespace callmonitor::platform
