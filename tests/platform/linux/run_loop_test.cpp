#include "platform/linux/run_loop.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>

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

// Runs the loop until `done`, at most for a time that only a loop that stands still needs.
void runUntil(bool& done) {
  const auto check = [&done](const auto& again, int left) -> void {
    if (done || left == 0) return;
    afterDelay(0.01, [again, left] { again(again, left - 1); });
  };
  check(check, 1000);
  runLoop();
}

TEST(RunLoop, CallsForADescriptorThatIsReadyAndNoMoreOnceTheHandleIsGone) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  int calls = 0;
  bool done = false;
  LoopSourceHandle watch = watchDescriptor(ends[0], EPOLLIN, [&] {
    ++calls;
    watch.reset();  // while its own action runs
    done = true;
  });
  ASSERT_TRUE(watch);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  runUntil(done);
  EXPECT_EQ(calls, 1);
  bool later = false;
  afterDelay(0.02, [&] { later = true; });
  runUntil(later);
  EXPECT_EQ(calls, 1) << "the byte is still there to be read";
  close(ends[0]);
  close(ends[1]);
}

TEST(RunLoop, CallsEveryPeriodUntilTheHandleGoes) {
  int calls = 0;
  bool done = false;
  LoopSourceHandle timer = everySeconds(0.001, [&] {
    if (++calls < 3) return;
    timer.reset();
    done = true;
  });
  ASSERT_TRUE(timer);
  runUntil(done);
  EXPECT_EQ(calls, 3);
}

TEST(RunLoop, EndsThoughOtherSourcesCouldStillBeReady) {
  int calls = 0;
  const LoopSourceHandle timer = everySeconds(1000, [&] { ++calls; });
  bool ran = false;
  afterDelay(0, [&] { ran = true; });
  runLoop();
  EXPECT_TRUE(ran);
  EXPECT_EQ(calls, 0);
}

TEST(RunLoop, GivesNoHandleForADescriptorThatIsNotOpen) {
  EXPECT_FALSE(watchDescriptor(-1, EPOLLIN, [] {}));
}

}  // namespace
}  // namespace callmonitor::platform
