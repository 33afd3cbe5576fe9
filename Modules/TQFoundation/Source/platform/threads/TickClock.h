#pragma once

/// @file TickClock.h
/// The steady clock in ticks, and points in time on it.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// How many nanoseconds a tick lasts: numerator / denominator.
struct Timebase {
  /// Neither is 0 in a clock that works.
  std::uint32_t numerator = 0;
  std::uint32_t denominator = 0;
};

/// Ticks since the machine started; never goes back, and stands still while the machine sleeps.
/// Any thread.
[[nodiscard]] TQ_EXPORT std::uint64_t monotonicTicks() noexcept;

/// 1/1 on this platform: ticks are nanoseconds.
[[nodiscard]] TQ_EXPORT Timebase systemTimebase() noexcept;

/// A point in time on the tick clock, in ticks.
using DispatchTime = std::uint64_t;
/// What dispatchTime() takes for this moment.
inline constexpr DispatchTime DispatchTimeNow = 0;
/// Never comes.
inline constexpr DispatchTime DispatchTimeForever = ~DispatchTime{0};

/// The point in time `nanoseconds` after `when` (before it when they are negative), truncated to
/// whole ticks. At least 1; one beyond the clock's range, or after DispatchTimeForever, is
/// DispatchTimeForever.
[[nodiscard]] TQ_EXPORT DispatchTime dispatchTime(DispatchTime when,
                                                  std::int64_t nanoseconds) noexcept;

}  // namespace tq
