#include <TQFoundation/environment/TQPerformanceTimer.h>

#include <atomic>
#include <limits>
#include <mutex>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/platform/threads/Random.h>

namespace tq {
namespace {

// One atomic word: readers see both halves or neither.
std::atomic<Timebase> timebase;
static_assert(std::atomic<Timebase>::is_always_lock_free);
constexpr int kAssertionLine = 40;  // the line number in the assertion's message

}  // namespace

void TQPerformanceTimingInitialise() {
  static std::once_flag once;
  std::call_once(once, [] { timebase.store(systemTimebase()); });
}

double TQTimeIntervalsForDuration(std::uint64_t ticks) {
  const Timebase sTimebaseInfo = timebase.load();
  if (sTimebaseInfo.denominator == 0) {
    assertionFailed(__func__, __FILE__, kAssertionLine, "sTimebaseInfo.denom != 0");
  }
  const std::uint64_t nanoseconds = ticks * sTimebaseInfo.numerator / sTimebaseInfo.denominator;
  return static_cast<double>(nanoseconds) * 1e-9;
}

double TQTimeRandomInterval(double base, double jitter) noexcept {
  if (!(jitter > 0)) return base;
  return base + jitter * uniformRandom(std::numeric_limits<std::uint32_t>::max()) * 0x1p-32;
}

std::int64_t TQTimeRandomDispatchTimeDelta(double base, double jitter) noexcept {
  return NumberValue(TQTimeRandomInterval(base, jitter) * 1e9).integerValue();
}

DispatchTime TQTimeRandomDispatchDelay(double base, double jitter) noexcept {
  return dispatchTime(DispatchTimeNow, TQTimeRandomDispatchTimeDelta(base, jitter));
}

}  // namespace tq
