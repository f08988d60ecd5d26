// What the stream's way out is like when monitoring or a look begins, whatever the parent process
// left.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <ostream>

#include "platform/platform.h"

namespace callmonitor::macos {
namespace {

// Makes standard output a pipe that does not wait, with its signal ignored and blocked; gives the
// reader's end.
int awkwardOutput() {
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) _exit(1);
  close(ends[1]);
  fcntl(STDOUT_FILENO, F_SETFL, fcntl(STDOUT_FILENO, F_GETFL) | O_NONBLOCK);
  signal(SIGPIPE, SIG_IGN);
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  return ends[0];
}

// Whoever monitors, and whoever only looks.
struct Beginning {
  const char* name;
  void (*prepare)();
};
// The names of tests hold a parameter as it is printed, and have to be those of every run.
void PrintTo(const Beginning& beginning, std::ostream* out) {
  *out << beginning.name;
}

struct Preparation : testing::TestWithParam<Beginning> {};

TEST_P(Preparation, AReaderThatGoesAwayEndsTheProcess) {
  EXPECT_EXIT(
      {
        const int reader = awkwardOutput();
        GetParam().prepare();
        close(reader);
        (void)!write(STDOUT_FILENO, "x", 1);
        _exit(2);
      },
      testing::KilledBySignal(SIGPIPE), "");
}

TEST_P(Preparation, ASlowReaderIsWaitedFor) {
  EXPECT_EXIT(
      {
        (void)awkwardOutput();
        GetParam().prepare();
        _exit((fcntl(STDOUT_FILENO, F_GETFL) & O_NONBLOCK) == 0 ? 0 : 3);
      },
      testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(, Preparation,
                         testing::Values(Beginning{"Monitoring", platform::prepareMonitoring},
                                         Beginning{"Looking", platform::prepareLooking}),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace callmonitor::macos
