#include <TQFoundation/platform/TickClock.h>

#include <time.h>

#include <atomic>

namespace tq {
namespace {

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
  const std::uint64_t start = when == DispatchTimeNow ? monotonicTicks() : when;
  const std::uint64_t moved = start + static_cast<std::uint64_t>(nanoseconds);  // wraps
  if (nanoseconds >= 0) return moved < start ? DispatchTimeForever : moved > 0 ? moved : 1;
  return moved >= start || moved == 0 ? 1 : moved;
}

}  // namespace tq
