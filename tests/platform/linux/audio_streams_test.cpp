#include "platform/linux/audio_streams.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace callmonitor::platform {
namespace {

// A browser (100) with an audio service (110) below its zygote (105), a terminal's shell (200) with
// a recorder (210), and a recorder that belongs to nobody (300).
std::map<std::int32_t, ProcessLook> processes() {
  const auto living = [](std::int32_t parent, std::uint64_t start) {
    return ProcessLook{false, ProcessStat{'S', parent, start}};
  };
  return {{100, living(1, 10)},
          {105, living(100, 11)},
          {110, living(105, 12)},
          {200, living(1, 20)},
          {210, living(200, 21)},
          {300, living(1, 30)},
          {400, {}},
          {410, living(400, 41)},
          {500, {true, {}}},
          {510, living(500, 51)},
          {600, living(610, 60)},
          {610, living(600, 61)}};
}

ProcessLook lookAmong(const std::map<std::int32_t, ProcessLook>& table, std::int32_t pid) {
  const auto found = table.find(pid);
  return found != table.end() ? found->second : ProcessLook{true, {}};
}

std::vector<Application> browser() {
  return {{100, 1.0, "com.google.Chrome", true}};
}

TEST(OwningProcess, IsTheNearestApplicationUpwards) {
  struct Case {
    std::string name;
    std::int32_t pid;
    std::optional<std::int32_t> expected;
  };
  const std::vector<Case> cases{
      {"an application owns its own stream", 100, 100},
      {"a helper's stream belongs to the application that started it", 110, 100},
      {"a process without an application above it owns its stream", 210, 210},
      {"a process that has ended leaves the owner of what is left of its stream open", 500,
       std::nullopt},
      {"a process whose parent has ended owns its stream", 510, 510},
      {"a process that cannot be looked at leaves the owner open", 400, std::nullopt},
      {"a parent that cannot be looked at leaves the owner open", 410, std::nullopt},
      {"parents that lead in a circle lead to nobody", 600, 600},
  };
  const auto table = processes();
  for (const Case& each : cases) {
    EXPECT_EQ(
        owningProcess(each.pid, browser(), [&](std::int32_t pid) { return lookAmong(table, pid); }),
        each.expected)
        << each.name;
  }
}

using Row = std::tuple<std::string, bool, bool>;  // bundle, input, output

std::optional<std::vector<Row>> rowsOf(const std::optional<std::vector<AudioProcess>>& folded) {
  if (!folded) return std::nullopt;
  std::vector<Row> rows;
  for (const AudioProcess& each : *folded) rows.emplace_back(each.bundle, each.input, each.output);
  return rows;
}

constexpr bool capture = true;
constexpr bool playback = false;
constexpr bool running = true;
constexpr bool paused = false;

struct FoldCase {
  std::string name;
  std::vector<AudioStream> streams;
  std::optional<std::vector<Row>> expected;
};

const std::vector<FoldCase>& foldCases() {
  static const std::vector<FoldCase> cases{
      {"no streams are a list without entries", {}, {{}}},
      {"a running capture stream is input",
       {{capture, running, 100}},
       {{{"com.google.Chrome", true, false}}}},
      {"a running playback stream is output",
       {{playback, running, 100}},
       {{{"com.google.Chrome", false, true}}}},
      {"a paused stream has an entry that runs nothing",
       {{capture, paused, 100}},
       {{{"com.google.Chrome", false, false}}}},
      {"one running stream of several is enough",
       {{capture, paused, 100}, {capture, running, 110}, {capture, paused, 110}},
       {{{"com.google.Chrome", true, false}}}},
      {"the streams of an application and of its helper make one entry",
       {{capture, running, 100}, {playback, running, 110}},
       {{{"com.google.Chrome", true, true}}}},
      {"a process without an application has an entry of its own",
       {{capture, running, 210}},
       {{{"file of 210", true, false}}}},
      {"a stream whose process is unknown is nobody's",
       {{playback, running, std::nullopt}},
       {{{"", false, true}}}},
      {"a stream whose process has ended leaves everything unknown",
       {{capture, running, 100}, {playback, running, 500}},
       std::nullopt},
      {"what is nobody's makes one entry, behind the others",
       {{playback, running, std::nullopt},
        {capture, running, 100, StreamClaim{"vm", "another id", "file", ""}},
        {capture, paused, 100}},
       {{{"com.google.Chrome", false, false}, {"", true, true}}}},
      {"a client's word of its process is taken where its program is that process's",
       {{capture, running, 110, StreamClaim{"vm", "id", "program-110", ""}}},
       {{{"com.google.Chrome", true, false}}}},
      {"a client's word that is another process's leaves everything unknown",
       {{capture, running, 110, StreamClaim{"vm", "id", "program-7", ""}}},
       std::nullopt},
      {"a client's word that is nobody's leaves everything unknown",
       {{capture, running, 999, StreamClaim{"vm", "id", "program-999", ""}}},
       std::nullopt},
      {"a sandbox's stream is that of its application, whatever process it names",
       {{capture, running, 999, StreamClaim{"vm", "id", "chrome", "com.google.Chrome"}}},
       {{{"com.google.Chrome", true, false}}}},
      {"a sandbox's stream is its application's without a window, too",
       {{playback, running, 7, StreamClaim{"vm", "id", "music", "org.example.Music"}}},
       {{{"org.example.Music", false, true}}}},
      {"an owner that cannot be told leaves everything unknown",
       {{capture, running, 100}, {capture, running, 410}},
       std::nullopt},
  };
  return cases;
}

std::optional<std::vector<Row>> fold(const std::vector<AudioStream>& streams,
                                     const std::map<std::int32_t, ProcessLook>& table,
                                     KnownApplications& owners,
                                     const std::vector<Application>& applications = browser()) {
  const ProcessQuestions questions{
      [&](std::int32_t pid) { return lookAmong(table, pid); },
      [](std::int32_t pid) { return "file of " + std::to_string(pid); },
      [](const std::string& flatpak) { return flatpak; },
      [&](std::int32_t pid) {
        return table.contains(pid) ? ProcessNames{"program-" + std::to_string(pid)}
                                   : ProcessNames{};
      },
      {"vm", "id"}};
  return rowsOf(foldStreams(streams, applications, owners, questions));
}

TEST(FoldStreams, MakesOneEntryForEachOwner) {
  for (const FoldCase& each : foldCases()) {
    KnownApplications owners;
    EXPECT_EQ(fold(each.streams, processes(), owners), each.expected) << each.name;
  }
}

TEST(FoldStreams, KeepsTheEntryOfAnOwnerForAsLongAsItsProcessLives) {
  using Rows = std::vector<Row>;
  auto table = processes();
  KnownApplications owners;
  EXPECT_EQ(fold({{capture, running, 110}}, table, owners),
            Rows({{"com.google.Chrome", true, false}}));
  EXPECT_EQ(fold({}, table, owners), Rows({{"com.google.Chrome", false, false}})) << "it is silent";
  table[110] = {true, {}};
  EXPECT_EQ(fold({}, table, owners), Rows({{"com.google.Chrome", false, false}}))
      << "its helper has ended";
  table[100] = {};
  EXPECT_EQ(fold({}, table, owners), Rows({{"com.google.Chrome", false, false}}))
      << "its process cannot be looked at";
  table[100] = {false, ProcessStat{'S', 1, 99}};
  EXPECT_EQ(fold({}, table, owners), Rows()) << "its number is another process's";
}

TEST(FoldStreams, KeepsTheEntryOfASandboxesApplication) {
  KnownApplications owners;
  const AudioStream sandboxed{capture, running, 7, StreamClaim{"", "", "", "com.google.Chrome"}};
  ASSERT_TRUE(fold({sandboxed}, processes(), owners));
  EXPECT_EQ(fold({}, processes(), owners), std::vector<Row>({{"com.google.Chrome", false, false}}));
}

TEST(FoldStreams, ForgetsNothingWhileAnOwnerCannotBeTold) {
  KnownApplications owners;
  ASSERT_TRUE(fold({{capture, running, 100}}, processes(), owners));
  EXPECT_EQ(fold({{capture, running, 410}}, processes(), owners), std::nullopt);
  EXPECT_EQ(fold({}, processes(), owners), std::vector<Row>({{"com.google.Chrome", false, false}}));
}

TEST(FoldStreams, NamesAnOwnerAsTheListOfApplicationsDoesFromWhenItIsInIt) {
  KnownApplications owners;
  EXPECT_EQ(fold({{capture, running, 100}}, processes(), owners, {}),
            std::vector<Row>({{"file of 100", true, false}}));
  EXPECT_EQ(fold({{capture, running, 100}}, processes(), owners),
            std::vector<Row>({{"com.google.Chrome", true, false}}));
  EXPECT_EQ(fold({{capture, running, 100}}, processes(), owners, {}),
            std::vector<Row>({{"com.google.Chrome", true, false}}));
}

constexpr bool servesPulse = true;
constexpr bool hasDevices = true;
constexpr bool isPipewire = true;
constexpr ServersBelieved neither{false, false};
constexpr ServersBelieved pipewireAlone{true, false};
constexpr ServersBelieved pulseAlone{false, true};
constexpr ServersBelieved both{true, true};

TEST(ServersBelieved, AreThoseThatTogetherHearEverything) {
  using enum Hearing;
  struct Case {
    std::string name;
    ServersHeard heard;
    bool pulseMatters;
    ServersBelieved expected;
  };
  const std::vector<Case> cases{
      {"no server at all", {}, true, neither},
      {"PipeWire with its PulseAudio service",
       {known, servesPulse, hasDevices},
       false,
       pipewireAlone},
      {"that service on a machine without devices",
       {known, servesPulse, false},
       false,
       pipewireAlone},
      {"PipeWire still tells what it has",
       {learning, servesPulse, hasDevices, known},
       false,
       neither},
      {"PipeWire does not answer", {silent, servesPulse, hasDevices, known}, false, neither},
      {"PipeWire that has devices, and no PulseAudio",
       {known, false, hasDevices, absent},
       true,
       pipewireAlone},
      {"PipeWire without devices, and no PulseAudio", {known, false, false, absent}, true, neither},
      {"PipeWire for screens only beside a PulseAudio", {known, false, false, known}, true, both},
      {"PipeWire with devices beside a PulseAudio", {known, false, hasDevices, known}, true, both},
      {"PulseAudio's socket leads to PipeWire by a way of its own",
       {known, false, hasDevices, known, isPipewire},
       true,
       pipewireAlone},
      {"PulseAudio still tells what it has", {known, false, hasDevices, learning}, true, neither},
      {"PulseAudio was not asked yet, and PipeWire has none",
       {known, false, false, learning},
       true,
       neither},
      {"what is at PulseAudio's socket does not answer, and PipeWire has devices",
       {known, false, hasDevices, silent},
       true,
       neither},
      {"what is at PulseAudio's socket does not answer, and PipeWire has none",
       {known, false, false, silent},
       true,
       neither},
      {"PulseAudio alone", {absent, false, false, known}, true, pulseAlone},
      {"PulseAudio alone does not answer", {absent, false, false, silent}, true, neither},
      {"PulseAudio alone still tells", {absent, false, false, learning}, true, neither},
      {"PipeWire cannot be reached but through PulseAudio's socket",
       {absent, false, false, known, isPipewire},
       true,
       neither},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(pulseMatters(each.heard), each.pulseMatters) << each.name;
    EXPECT_EQ(serversBelieved(each.heard), each.expected) << each.name;
  }
}

}  // namespace
}  // namespace callmonitor::platform
