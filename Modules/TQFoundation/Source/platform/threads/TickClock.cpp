#include <TQFoundation/platform/threads/TickClock.h>

#include <time.h>

#include <algorithm>
#include <atomic>

#include <TQFoundation/base/TQAssert.h>

namespace tq {
namespace {

__extension__ using Wide = __int128;  // holds 64 bits times 32, and what is added to them

std::atomic<const TickClock*> clockInPlace = nullptr;

}  // namespace

std::uint64_t monotonicTicks() noexcept {
  if (const TickClock* const clock = clockInPlace.load(std::memory_order_acquire)) {
    return clock->ticks();
  }
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(now.tv_nsec);
}

Timebase systemTimebase() noexcept {
  const TickClock* const clock = clockInPlace.load(std::memory_order_acquire);
  return clock != nullptr ? clock->timebase : Timebase{1, 1};
}

const TickClock* setTickClock(const TickClock* clock) noexcept {
  return clockInPlace.exchange(clock);
}

DispatchTime dispatchTime(DispatchTime when, std::int64_t nanoseconds) noexcept {
  if (when == DispatchTimeForever) return when;
  const Timebase timebase = systemTimebase();
  TQ_ASSERT(timebase.numerator != 0);
  const Wide start = when == DispatchTimeNow ? monotonicTicks() : when;
  const Wide ticks = Wide{nanoseconds} * timebase.denominator / timebase.numerator;
  return static_cast<DispatchTime>(std::clamp<Wide>(start + ticks, 1, DispatchTimeForever));
}

}  // namespace tq
