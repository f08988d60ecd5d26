#include "platform/linux/application_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

ProcessLook living(std::uint64_t startTicks) {
  return {false, ProcessStat{'S', 1, startTicks}};
}
const ProcessLook ended{true, {}};
const ProcessLook nothingSaid{};

constexpr std::int32_t pid = 7;

KnownApplications sinceTick100() {
  return {{pid, {{'S', 1, 100}, "com.google.Chrome"}}};
}

TEST(UpdateKnown, KeepsALaunchUntilTheKernelSaysThatItIsOver) {
  struct Case {
    std::string name;
    KnownApplications known;
    std::set<std::int32_t> listed;
    ProcessLook look;
    std::map<std::int32_t, std::uint64_t> expected;  // process id to start
  };
  using Starts = std::map<std::int32_t, std::uint64_t>;
  const std::vector<Case> cases{
      {"a listed process becomes known", {}, {pid}, living(100), Starts{{pid, 100}}},
      {"a process that nobody lists does not", {}, {}, living(100), {}},
      {"a listed process that has ended does not", {}, {pid}, ended, {}},
      {"a listed process that cannot be looked at does not yet", {}, {pid}, nothingSaid, {}},
      {"a listed one goes on", sinceTick100(), {pid}, living(100), Starts{{pid, 100}}},
      {"in no list any more but alive", sinceTick100(), {}, living(100), Starts{{pid, 100}}},
      {"in no list and not to be looked at", sinceTick100(), {}, nothingSaid, Starts{{pid, 100}}},
      {"listed and not to be looked at", sinceTick100(), {pid}, nothingSaid, Starts{{pid, 100}}},
      {"ended, though a list still has it", sinceTick100(), {pid}, ended, {}},
      {"ended and in no list", sinceTick100(), {}, ended, {}},
      {"its number is another process's, which is listed",
       sinceTick100(),
       {pid},
       living(200),
       Starts{{pid, 200}}},
      {"its number is another process's, which is not listed", sinceTick100(), {}, living(200), {}},
  };
  for (const Case& each : cases) {
    KnownApplications known = each.known;
    updateKnown(known, each.listed, [&](std::int32_t) { return each.look; });
    Starts starts;
    for (const auto& [number, application] : known) {
      starts[number] = application.launch.startTicks;
    }
    EXPECT_EQ(starts, each.expected) << each.name;
  }
}

TEST(UpdateKnown, KeepsWhatIsKnownOfALaunchAndNothingOfAnEarlierOne) {
  KnownApplications known = sinceTick100();
  updateKnown(known, {pid}, [](std::int32_t) { return living(100); });
  EXPECT_EQ(known.at(pid).bundle, "com.google.Chrome");
  updateKnown(known, {pid}, [](std::int32_t) { return living(200); });
  EXPECT_EQ(known.at(pid).bundle, std::nullopt);
}

TEST(LaunchGoesOn, IsDeniedOnlyByALookThatSaysSo) {
  const KnownApplications known = sinceTick100();
  EXPECT_TRUE(launchGoesOn(known, pid, living(100)));
  EXPECT_TRUE(launchGoesOn(known, pid, nothingSaid));
  EXPECT_FALSE(launchGoesOn(known, pid, ended));
  EXPECT_FALSE(launchGoesOn(known, pid, living(200)));
  EXPECT_FALSE(launchGoesOn(known, 8, living(100))) << "a process that is not known";
}

TEST(IsStranger, HoldsForTheVeryLaunchThatTheListWasMadeForInVain) {
  struct Case {
    std::string name;
    std::optional<Stranger> stranger;
    ProcessLook look;
    bool expected;
  };
  const std::vector<Case> cases{
      {"the same launch", Stranger{pid, 100}, living(100), true},
      {"a later launch under its number", Stranger{pid, 100}, living(200), false},
      {"another process", Stranger{pid + 1, 100}, living(100), false},
      {"a list that was made for nobody", std::nullopt, living(100), false},
      {"a look that says nothing", Stranger{pid, 100}, nothingSaid, false},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(isStranger(CycleList{1, {}, each.stranger}, pid, each.look), each.expected)
        << each.name;
  }
}

}  // namespace
}  // namespace callmonitor::platform
