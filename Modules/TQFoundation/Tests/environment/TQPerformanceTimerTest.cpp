#include <TQFoundation/environment/TQPerformanceTimer.h>

#include <TQFoundation/platform/threads/Random.h>
#include <TQFoundation/platform/threads/TickClockSource.h>

#include "support/Test.h"

namespace {

std::uint64_t now = 0;
const detail::TickClockSource handClock = {[]() noexcept { return now; }, {125, 3}};

struct PerformanceTimer : testing::Test {
  PerformanceTimer() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~PerformanceTimer() override { detail::setTickClockSource(nullptr); }
};

TEST_F(PerformanceTimer, MeasuresInTicksOfTheClock) {
  const std::uint64_t start = TQTimeNow();
  EXPECT_LE(start, TQTimeNow());
  detail::setTickClockSource(&handClock);
  now = 1700;
  EXPECT_EQ(TQDurationSince(1000), 700u);
  EXPECT_EQ(TQDurationBetween(5, 3), ~std::uint64_t{0} - 1);  // wraps if the clock goes back
}

// The next tests run in separate processes, because the timebase is read only once.
TEST_F(PerformanceTimer, StopsWithoutATimebase) {
  EXPECT_EXIT(static_cast<void>(TQTimeIntervalsForDuration(1)), testing::KilledBySignal(SIGABRT),
              "Assertion failed: \\(sTimebaseInfo.denom != 0\\), function "
              "TQTimeIntervalsForDuration, file "
              "Modules/TQFoundation/Source/TQPerformanceTimer, line 40\\.");
}

TEST_F(PerformanceTimer, MultipliesAndThenDividesIntegers) {
  const auto check = [] {
    detail::setTickClockSource(&handClock);
    TQPerformanceTimingInitialise();
    detail::setTickClockSource(nullptr);
    TQPerformanceTimingInitialise();  // does nothing: the first timebase stays
    const bool holds = TQTimeIntervalsForDuration(24'000'000) == 1.0 &&
                       TQTimeIntervalsForDuration(1) == 41 * 1e-9 &&
                       // 2^61 ticks times 125 wraps to 5 * 2^61
                       TQTimeIntervalsForDuration(std::uint64_t{1} << 61) ==
                           static_cast<double>((std::uint64_t{5} << 61) / 3) * 1e-9;
    std::exit(holds ? 0 : 1);
  };
  EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

TEST_F(PerformanceTimer, RandomIntervalsStayInRange) {
  EXPECT_EQ(TQTimeRandomInterval(2, -1), 2);
  EXPECT_EQ(TQTimeRandomInterval(2, std::nan("")), 2);
  std::vector<double> intervals(4000);
  for (double& interval : intervals) interval = TQTimeRandomInterval(2, 1);
  const auto [lowest, highest] = std::ranges::minmax(intervals);
  EXPECT_TRUE(lowest >= 2 && lowest < 2.01);  // fails by chance once in 10^17 runs
  EXPECT_TRUE(highest > 2.99 && highest < 3);
  EXPECT_EQ(uniformRandom(0), 0u);
  EXPECT_EQ(uniformRandom(1), 0u);
}

TEST_F(PerformanceTimer, DelaysSaturate) {
  constexpr auto max = std::numeric_limits<std::int64_t>::max();
  detail::setTickClockSource(&handClock);
  now = 1000;
  const test::Rows<double, std::int64_t, DispatchTime> cases{
      {1, 1'000'000'000, 24'001'000},  // three ticks last 125 ns
      {1.9999999999, 1'999'999'999, 48'000'999},
      {-1e-7, -100, 998},
      {-1, -1'000'000'000, 1},
      {1e300, max, 221'360'928'884'515'619u},
      {-test::kInf, std::numeric_limits<std::int64_t>::min(), 1},
      {std::nan(""), 0, 1000},
  };
  for (const auto& [seconds, delta, delay] : cases) {
    EXPECT_EQ(TQTimeRandomDispatchTimeDelta(seconds, 0), delta) << seconds;
    EXPECT_EQ(TQTimeRandomDispatchDelay(seconds, 0), delay) << seconds;
  }
  EXPECT_EQ(dispatchTime(DispatchTimeForever - 6, 249), DispatchTimeForever - 1);
  EXPECT_EQ(dispatchTime(DispatchTimeForever - 6, 292), DispatchTimeForever);
  EXPECT_EQ(dispatchTime(DispatchTimeForever, -300), DispatchTimeForever);
  EXPECT_EQ(dispatchTime(7, -300), 1u);
  now = 0;
  EXPECT_EQ(dispatchTime(DispatchTimeNow, 0), 1u);
}

}  // namespace
