#include <TQFoundation/platform/loops/Timer.h>

#include <TQFoundation/objects/Weak.h>

#include "support/HandMovedClock.h"
#include "support/Test.h"

namespace {

using namespace std::chrono_literals;

// Counts how often its timer fires, and runs a closure each time.
struct Probe final : Subclass<Probe> {
  static constexpr std::string_view className = "Probe";
  explicit Probe(std::function<void(Timer&)> act = {}) : act_(std::move(act)) {}

  static void fire(Timer& timer) {
    const Ref<Probe> self = refCast<Probe>(Ref<Object>(timer.userInfo()));
    ++self->fired;
    if (self->act_) self->act_(timer);
  }
  Ref<Timer> schedule(double seconds, bool repeats = false) {
    return Timer::scheduledTimerWithTimeInterval(seconds, fire, share(*this), repeats);
  }

  int fired = 0;
  std::function<void(Timer&)> act_;
};

TEST(Timer, OnceFiresWhenDueAndIsValidUntilItsActionHasReturned) {
  HandMovedClock clock;
  bool wasValid = false;
  const auto probe = makeRef<Probe>([&](Timer& timer) {
    wasValid = timer.isValid();
    RunLoop::current().runOnce();  // does not fire it again
  });
  const Weak<Timer> timer = probe->schedule(0.5);
  clock.pass(499ms);
  EXPECT_EQ(probe->fired, 0);
  clock.pass(1ms);
  EXPECT_EQ(probe->fired, 1);
  EXPECT_TRUE(wasValid);
  EXPECT_TRUE(timer.expired()) << "only the loop retained it";
  EXPECT_EQ(probe->referenceCount(), 1u);
}

TEST(Timer, RepeatsOnItsGridAndSkipsPassedTimes) {
  HandMovedClock clock;
  const auto probe = makeRef<Probe>([&](Timer&) { clock.jump(30ms); });  // a slow action
  const auto timer = probe->schedule(0.1, true);
  const test::Rows<std::chrono::milliseconds, int> steps{
      {100ms, 1},  // at 100, ends at 130
      {70ms, 2},   // at 200, ends at 230
      {500ms, 3},  // at 730, not for 300...600 again; ends at 760
      {39ms, 3},   // 799
      {1ms, 4},    // on the grid
  };
  for (const auto& [step, fired] : steps) {
    clock.pass(step);
    EXPECT_EQ(probe->fired, fired);
  }
  timer->invalidate();
  timer->invalidate();
  EXPECT_EQ(timer->userInfo(), nullptr);
  clock.pass(1000ms);
  EXPECT_EQ(probe->fired, 4);
}

TEST(Timer, OddIntervals) {
  HandMovedClock clock;
  const auto never = makeRef<Probe>();
  const auto timer = never->schedule(test::kInf, true);
  for (const double seconds : {0.0, -5.0, -test::kInf}) {
    const auto probe = makeRef<Probe>();
    probe->schedule(seconds);
    clock.pass(0ms);
    EXPECT_EQ(probe->fired, 0) << "a tenth of a millisecond";
    clock.pass(1000h);
    EXPECT_EQ(probe->fired, 1);
  }
  EXPECT_EQ(never->fired, 0);
  timer->invalidate();
}

TEST(Timer, TimersThatAnActionSchedulesWaitForALaterPass) {
  HandMovedClock clock;
  const auto late = makeRef<Probe>();
  makeRef<Probe>([&](Timer&) {
    clock.jump(5ms);
    late->schedule(0);
  })->schedule(0.1);
  clock.pass(200ms);
  EXPECT_EQ(late->fired, 0);
  clock.pass(1ms);
  EXPECT_EQ(late->fired, 1);
}

TEST(Timer, OtherThreadsMayInvalidateItAndItEndsWithItsThread) {
  HandMovedClock clock;
  const auto probe = makeRef<Probe>();
  auto timer = probe->schedule(0.1);
  std::jthread([&] { timer->invalidate(); }).join();
  EXPECT_FALSE(timer->isValid());
  clock.pass(200ms);
  std::jthread([&] {
    HandMovedClock other;
    timer = probe->schedule(0.1, true);
    other.jump(200ms);
  }).join();
  EXPECT_FALSE(timer->isValid());
  timer->invalidate();
  EXPECT_EQ(probe->fired, 0);
  EXPECT_EQ(probe->referenceCount(), 1u);
}

// Compared with a sorted map.
TEST(Timer, ManyFireInTheOrderOfTheirTimes) {
  HandMovedClock clock;
  std::mt19937 random(7);
  const auto upTo = [&](int n) { return std::uniform_int_distribution<int>(0, n)(random); };
  std::map<std::pair<int, int>, Ref<Timer>> twin;  // by due time and number
  std::vector<int> fired, expected;
  int now = 0;
  for (int i = 0; i < 20'000; ++i) {
    if (const int choice = upTo(9); choice < 6) {
      const int delay = upTo(300) + 1;
      auto probe = makeRef<Probe>([&fired, i](Timer&) { fired.push_back(i); });
      twin[{now + delay, i}] = probe->schedule(delay / 1000.0);
    } else if (choice < 9 && !twin.empty()) {
      const auto any = std::next(twin.begin(), upTo(static_cast<int>(twin.size()) - 1) % 50);
      any->second->invalidate();
      twin.erase(any);
    } else {
      const int step = upTo(20);
      now += step;
      clock.pass(std::chrono::milliseconds(step));
      for (; !twin.empty() && twin.begin()->first.first <= now; twin.erase(twin.begin())) {
        expected.push_back(twin.begin()->first.second);
      }
    }
  }
  EXPECT_EQ(fired, expected);
  for (const auto& [key, timer] : twin) timer->invalidate();
}

TEST(TimerStress, InvalidatedWhileItFires) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<bool> isDone{false};
    Ref<Timer> timer;
    std::atomic<Timer*> shared{nullptr};
    std::jthread owner([&] {
      timer = makeRef<Probe>()->schedule(0.00001, true);
      shared = timer.get();
      while (!isDone) RunLoop::current().runOnce(0.001);
      RunLoop::current().runOnce();
      EXPECT_EQ(timer->userInfo(), nullptr);
    });
    while (shared == nullptr) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(round));
    shared.load()->invalidate();
    isDone = true;
  }
}

TEST(TimerDeathTest, MisuseStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(makeRef<Probe>()->schedule(std::nan("")), "isnan");
  EXPECT_DEATH(Timer::scheduledTimerWithTimeInterval(1, nullptr, nullptr, false),
               "action != nullptr");
}

}  // namespace
