#include <TQFoundation/platform/operations/WorkerPool.h>

#include <sched.h>
#include <unistd.h>

#include "support/Test.h"

namespace {

TEST(WorkerPool, MakesEachCallOnceWhateverTheCost) {
  for (const std::size_t count : {0u, 1u, 2u, 17u, 18u, 1'000u}) {
    for (const std::uint32_t picoseconds : {0u, 1u, 1'000'000'000u}) {
      for (const std::uint32_t unmeasured : {0u, 31u}) {
        std::vector<std::atomic<int>> calls(count);
        const auto call = [&](std::size_t i) { ++calls[i]; };
        ApplyCost cost;
        cost.picoseconds = picoseconds;
        cost.unmeasured = unmeasured;
        parallelApply(count, call, &cost);
        parallelApply(count, call);
        groupApply(count, call);
        EXPECT_TRUE(std::ranges::all_of(calls, [](int each) { return each == 3; })) << count;
      }
    }
  }
}

#ifdef __GLIBCXX__  // libc++ cannot end a thread
TEST(WorkerPool, ACancelledThreadWaitsForItsCalls) {
  std::atomic<int> begun{0}, ended{0};
  std::thread caller(
      [&] { groupApply(2, [&](std::size_t) { ++begun, ::usleep(20'000), ++ended; }); });
  while (begun == 0) std::this_thread::yield();
  ::pthread_cancel(caller.native_handle());
  caller.join();
  EXPECT_EQ(ended, 2);
}
#endif

TEST(WorkerPoolStress, VisitsEveryIndexOnceAndSharesExpensiveLoops) {
  ApplyCost cost;
  // The last loop is expected to be cheap and begins on one thread. It is shared when it turns out
  // to be expensive.
  for (const std::size_t count : {3'000u, 3'000u, 100'000u, 10u, 60u}) {
    std::vector<std::atomic<int>> calls(count);
    const auto call = [&](std::size_t i) {
      if (count == 60) std::this_thread::sleep_for(std::chrono::microseconds(50));
      ++calls[i];
    };
    parallelApply(count, call, &cost);
    EXPECT_TRUE(std::ranges::all_of(calls, [](int each) { return each == 1; }));
  }
  EXPECT_NE(cost.picoseconds, 0u);

  // Very short loops are timed only occasionally. Calls that become expensive are still detected.
  cost.picoseconds = 1;
  const auto sleep = [](std::size_t) {
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  };
  for (int loop = 0; loop < 32; ++loop) parallelApply(2, sleep, &cost);
  EXPECT_GE(cost.picoseconds, 50'000'000u / 2);  // two at once take half of it each

  // So are those that become expensive after the last look at the time.
  cost.picoseconds = 1;
  cost.unmeasured = 0;
  const auto sleepLate = [&](std::size_t i) { return i < 2 ? void() : sleep(i); };
  for (int loop = 0; loop < 2; ++loop) parallelApply(10, sleepLate, &cost);
  EXPECT_GE(cost.picoseconds, 10'000'000u);
}

// Loops whose calls were cheap so far are shared as soon as calls turn out to be expensive, at any
// place in the loop, and whether the loop is measured or not.
TEST(WorkerPoolStress, SharesLoopsThatBecomeExpensive) {
  // On one core no other thread takes part. Then the cost shows that the loop was handed on: it is
  // the mean of the calls after that, which are all dear, and not of all calls.
  cpu_set_t cores;
  ASSERT_EQ(::sched_getaffinity(0, sizeof cores, &cores), 0);
  const bool isAlone = CPU_COUNT(&cores) < 2;
  const std::chrono::milliseconds patience(isAlone ? 2 : 50);
  for (const std::size_t cheap : {0u, 1u, 100u, 400u}) {
    for (const std::uint32_t unmeasured : {0u, 31u}) {
      ApplyCost cost;
      cost.picoseconds = 500;
      cost.unmeasured = unmeasured;
      const auto caller = std::this_thread::get_id();
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
      std::atomic<bool> isShared{false};
      parallelApply(
          cheap + 60,
          [&](std::size_t i) {
            if (i < cheap) return;
            if (std::this_thread::get_id() != caller) isShared = true;
            const auto dear = std::chrono::steady_clock::now() + patience;
            while (!isShared && std::chrono::steady_clock::now() < std::min(dear, end)) {
              std::this_thread::yield();  // until another thread takes part
            }
          },
          &cost);
      EXPECT_TRUE(isShared || (isAlone && cost.picoseconds > 1'500'000'000))
          << cheap << " cheap calls, " << cost.picoseconds << " ps";
    }
  }
}

}  // namespace
