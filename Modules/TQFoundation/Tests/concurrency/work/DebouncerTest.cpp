#include <TQFoundation/concurrency/work/Debouncer.h>

#include <latch>

#include <TQFoundation/concurrency/work/TimerBlock.h>

#include "support/HandMovedClock.h"
#include "support/Objects.h"

namespace {

using namespace std::chrono_literals;

TEST(Debouncer, RunsItsActionOnceAfterTheLastRequestOfABurst) {
  HandMovedClock clock;
  int runs = 0;
  auto debouncer = Debouncer::initWithInterval(0.5, [&] { ++runs; });
  for (const auto step : {0ms, 100ms, 100ms}) {
    clock.pass(step);
    debouncer->schedulePerformAction();
  }
  clock.pass(499ms);
  EXPECT_EQ(runs, 0);
  const Weak<Debouncer> weakly = debouncer;
  debouncer = nullptr;
  EXPECT_FALSE(weakly.expired()) << "the pending request keeps it alive";
  clock.pass(1ms);
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(weakly.expired());
}

TEST(Debouncer, ActionMayRequestAgainAndReleaseTheLastReference) {
  EXPECT_DEATH(static_cast<void>(Debouncer::init(1, nullptr)), "actionToPerform != nullptr");
  HandMovedClock clock;
  int runs = 0;
  Ref<LRDebouncer> debouncer;
  debouncer = LRDebouncer::init(
      0.1, [&] { ++runs == 1 ? debouncer->schedulePerformAction() : void(debouncer = nullptr); });
  debouncer->schedulePerformAction();
  for (const int expected : {1, 2, 2}) {
    clock.pass(100ms);
    EXPECT_EQ(runs, expected);
  }
  EXPECT_EQ(debouncer, nullptr);
}

// A request on a thread whose run loop does not run never fires, and cancels the earlier request.
TEST(Debouncer, RunsOnTheThreadOfTheLastRequest) {
  HandMovedClock clock;
  int runs = 0;
  const auto debouncer = Debouncer::init(0.1, [&] { ++runs; });
  debouncer->schedulePerformAction();
  std::jthread([&] { debouncer->schedulePerformAction(); }).join();
  clock.pass(1000ms);
  EXPECT_EQ(runs, 0);
  std::thread::id ranOn, expected;
  const auto other = Debouncer::init(0.001, [&] { ranOn = std::this_thread::get_id(); });
  std::jthread([&] {
    expected = std::this_thread::get_id();
    other->schedulePerformAction();
    while (ranOn == std::thread::id()) RunLoop::current().runOnce(60);
  }).join();
  EXPECT_EQ(ranOn, expected);

  // A thread ends after another thread has replaced its request.
  const auto taken = Debouncer::init(0.1, [&] { ++runs; });
  std::latch isRequested(1), isTaken(1);
  std::jthread worker([&] {
    taken->schedulePerformAction();
    isRequested.count_down();
    isTaken.wait();
  });
  isRequested.wait();
  taken->schedulePerformAction();
  isTaken.count_down();
  worker.join();
  clock.pass(1000ms);
  EXPECT_EQ(runs, 1);
}

TEST(TimerBlock, RunsItsBlockUntilTheBlockInvalidatesIt) {
  HandMovedClock clock;
  int runs = 0;
  scheduledTimerWithTimeInterval(0.1, true, [&, held = std::string(100, 'x')](Timer& timer) {
    if (++runs == 2) timer.invalidate();
    EXPECT_EQ(held.size(), 100u) << "the running block is not destroyed";
  });
  const auto empty = scheduledTimerWithTimeInterval(0.1, false, nullptr);
  EXPECT_EQ(empty->userInfo(), nullptr);
  for (const int expected : {1, 2, 2}) {
    clock.pass(100ms);
    EXPECT_EQ(runs, expected);
  }
  EXPECT_FALSE(empty->isValid());
  const auto foreign = Timer::scheduledTimerWithTimeInterval(
      1, TQExecuteSimpleBlock, String::stringWithUTF8("no block"), false);
  EXPECT_THROW(TQExecuteSimpleBlock(*foreign), Exception);
  foreign->invalidate();
  TQExecuteSimpleBlock(*foreign);
}

}  // namespace
