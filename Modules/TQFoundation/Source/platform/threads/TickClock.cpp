#include <TQFoundation/platform/threads/TickClock.h>

#include <time.h>

#include <algorithm>
#include <atomic>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/platform/threads/TickClockSource.h>

namespace tq {
namespace {

__extension__ using Wide = __int128;  // holds a product of 64 and 32 bits plus an offset

std::atomic<const detail::TickClockSource*> replacement = nullptr;

}  // namespace

std::uint64_t monotonicTicks() noexcept {
  if (const auto* const source = replacement.load(std::memory_order_acquire)) {
    return source->ticks();
  }
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(now.tv_nsec);
}

Timebase systemTimebase() noexcept {
  const auto* const source = replacement.load(std::memory_order_acquire);
  return source != nullptr ? source->timebase : Timebase{1, 1};
}

void detail::setTickClockSource(const TickClockSource* source) noexcept { replacement = source; }

DispatchTime dispatchTime(DispatchTime when, std::int64_t nanoseconds) noexcept {
  if (when == DispatchTimeForever) return when;
  const Timebase timebase = systemTimebase();
  TQ_ASSERT(timebase.numerator != 0);
  const Wide start = when == DispatchTimeNow ? monotonicTicks() : when;
  const Wide ticks = Wide{nanoseconds} * timebase.denominator / timebase.numerator;
  return static_cast<DispatchTime>(std::clamp<Wide>(start + ticks, 1, DispatchTimeForever));
}

}  // namespace tq
