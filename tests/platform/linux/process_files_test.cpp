#include "platform/linux/process_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace callmonitor::platform {
namespace {

std::string statLine(const std::string& name, const std::string& start) {
  return "42 (" + name + ") S 7 42 42 0 -1 4194560 100 0 0 0 5 3 0 0 20 0 1 0 " + start +
         " 1000 200\n";
}

TEST(ParseProcessStat, CountsFieldsFromTheEndOfTheName) {
  struct Case {
    std::string name;
    std::string text;
    std::optional<std::uint64_t> start;
  };
  const std::vector<Case> cases{
      {"a plain name", statLine("chromium", "5150"), 5150},
      {"a name with spaces", statLine("Web Content", "5150"), 5150},
      {"a name with parentheses and numbers", statLine("a) R 1 (b", "5150"), 5150},
      {"a start time beyond 32 bits", statLine("x", "99999999999"), 99999999999},
      {"a start time that is no number refuses", statLine("x", "soon"), std::nullopt},
      {"a line without a name refuses", "42 S 7", std::nullopt},
      {"a line that breaks off refuses", "42 (x) S 7 42", std::nullopt},
      {"nothing refuses", "", std::nullopt},
  };
  for (const Case& each : cases) {
    const auto stat = parseProcessStat(each.text);
    ASSERT_EQ(stat.has_value(), each.start.has_value()) << each.name;
    if (!stat) continue;
    EXPECT_EQ(stat->startTicks, *each.start) << each.name;
    EXPECT_EQ(stat->state, 'S') << each.name;
    EXPECT_EQ(stat->parent, 7) << each.name;
  }
}

TEST(ParseBootTime, FindsTheLineWhereverItStands) {
  EXPECT_EQ(parseBootTime("cpu 1 2\nbtime 1700000000\nprocesses 3\n"), 1700000000);
  EXPECT_EQ(parseBootTime("btime 5"), 5);
  EXPECT_EQ(parseBootTime("cpu 1\nxbtime 5\n"), std::nullopt);
  EXPECT_EQ(parseBootTime("btime x\n"), std::nullopt);
}

TEST(SplitAtNul, KeepsEmptyTextsBetweenOthers) {
  const std::string text("a\0\0b c\0", 7);
  EXPECT_EQ(splitAtNul(text), (std::vector<std::string>{"a", "", "b c"}));
  EXPECT_TRUE(splitAtNul("").empty());
}

TEST(ProcessLook, EndsAProcessOnlyOnTheKernelsWord) {
  struct Case {
    std::string name;
    int error;
    std::string text;
    bool gone;
    bool living;
    OtherThreads others = OtherThreads::none;
  };
  const auto inState = [](char state) {
    std::string line = statLine("x", "5150");
    line[line.find(") S") + 2] = state;
    return line;
  };
  const std::vector<Case> cases{
      {"no such file: gone", ENOENT, "", true, false},
      {"ended between opening and reading: gone", ESRCH, "", true, false},
      {"ended but not reaped: gone", 0, inState('Z'), true, false},
      {"dead: gone", 0, inState('X'), true, false},
      {"first thread ended, others live: lives", 0, inState('Z'), false, true,
       OtherThreads::living},
      {"first thread dead, others live: lives", 0, inState('X'), false, true, OtherThreads::living},
      {"first thread ended, of others nothing is known: says nothing", 0, inState('Z'), false,
       false, OtherThreads::unknown},
      {"gone, whatever was known of its threads", ENOENT, "", true, false, OtherThreads::living},
      {"running", 0, inState('R'), false, true},
      {"stopped lives", 0, inState('T'), false, true},
      {"no file descriptor left says nothing", EMFILE, "", false, false},
      {"no file descriptor left in the system says nothing", ENFILE, "", false, false},
      {"no memory says nothing", ENOMEM, "", false, false},
      {"no permission says nothing", EACCES, "", false, false},
      {"an error while reading says nothing", EIO, "42 (x) S", false, false},
      {"a line that cannot be understood says nothing", 0, "42 (x) S 7", false, false},
  };
  for (const Case& each : cases) {
    const ProcessLook look = processLook(each.error, each.text, [&] { return each.others; });
    EXPECT_EQ(look.gone, each.gone) << each.name;
    EXPECT_EQ(look.stat.has_value(), each.living) << each.name;
  }
}

TEST(LookAtProcess, TellsALivingProcessFromNone) {
  EXPECT_TRUE(lookAtProcess(-1).gone);
  const ProcessLook own = lookAtProcess(getpid());
  EXPECT_FALSE(own.gone);
  EXPECT_TRUE(own.stat.has_value());
}

// A process whose first thread ends at once while another stays until the pipe is closed.
pid_t startWithoutFirstThread(const std::array<int, 2>& ends) {
  const pid_t child = fork();
  if (child != 0) return child;
  close(ends[1]);
  static int pipeEnd = ends[0];
  pthread_t thread{};
  const auto stay = [](void*) -> void* {
    char byte = 0;
    while (read(pipeEnd, &byte, 1) > 0) {
    }
    _exit(0);
  };
  if (pthread_create(&thread, nullptr, stay, nullptr) != 0) _exit(1);
  // Not pthread_exit, which unwinds through the test's own frames.
  syscall(SYS_exit, 0);
  _exit(1);
}

char stateOf(pid_t pid) {
  const auto text = readFile("/proc/" + std::to_string(pid) + "/stat");
  const auto stat = text ? parseProcessStat(*text) : std::nullopt;
  return stat ? stat->state : '?';
}

TEST(LookAtProcess, SeesAProcessLiveOnWithoutItsFirstThread) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  const pid_t child = startWithoutFirstThread(ends);
  ASSERT_GT(child, 0);
  close(ends[0]);
  const auto waitForState = [&](char wanted) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (stateOf(child) != wanted && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return stateOf(child) == wanted;
  };
  EXPECT_TRUE(waitForState('Z'));
  const ProcessLook living = lookAtProcess(child);
  EXPECT_FALSE(living.gone);
  EXPECT_TRUE(living.stat.has_value());

  close(ends[1]);
  siginfo_t information{};
  // Ended, and left unreaped.
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOWAIT), 0);
  EXPECT_TRUE(waitForState('Z'));
  const ProcessLook ended = lookAtProcess(child);
  EXPECT_TRUE(ended.gone);
  EXPECT_FALSE(ended.stat.has_value());
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
}

TEST(LookAtProcess, SaysNothingWhenNoFileCanBeOpened) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const ProcessLook look = lookAtProcess(getpid());
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_FALSE(look.gone);
  EXPECT_FALSE(look.stat.has_value());
}

TEST(LaunchTime, IsTheSameDoubleAtEveryReading) {
  const auto stat = lookAtProcess(getpid()).stat;
  ASSERT_TRUE(stat.has_value());
  const auto first = launchTime(*stat);
  ASSERT_TRUE(first.has_value());
  EXPECT_GT(*first, 0);
  const auto again = lookAtProcess(getpid()).stat;
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(launchTime(*again), first);
}

}  // namespace
}  // namespace callmonitor::platform
