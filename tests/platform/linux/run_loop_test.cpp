#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

void setTimerWithoutDescriptors() {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  setrlimit(RLIMIT_NOFILE, &none);
  afterDelay(0, [] {});
}

TEST(RunLoopDeathTest, AMissingTimerEndsTheProgramWithAWord) {
  EXPECT_EXIT(setTimerWithoutDescriptors(), testing::KilledBySignal(SIGABRT),
              "^call-monitor: the run loop cannot start: [^\n]+\n$");
}

TEST(RunLoopDeathTest, EndsWithStatusZeroWhenNothingCanHappenAnyMore) {
  EXPECT_EXIT(
      {
        bool ran = false;
        afterDelay(0, [&] { ran = true; });
        runLoop();
        exit(ran ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace callmonitor::platform
