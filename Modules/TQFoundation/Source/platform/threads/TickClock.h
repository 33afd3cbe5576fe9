#pragma once

/// @file TickClock.h
/// The system's steady clock in ticks, and points in time on it.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The length of a tick in nanoseconds: numerator / denominator.
struct Timebase {
  /// Neither is 0 for a clock that works.
  std::uint32_t numerator = 0;
  std::uint32_t denominator = 0;
};

/// Returns the ticks since the machine started. Never decreases; stops while the machine sleeps.
/// Any thread.
[[nodiscard]] TQ_EXPORT std::uint64_t monotonicTicks() noexcept;

/// Returns 1/1 on this platform: a tick is a nanosecond.
[[nodiscard]] TQ_EXPORT Timebase systemTimebase() noexcept;

/// A point in time on the tick clock, in ticks.
using DispatchTime = std::uint64_t;
/// The current time, as an argument of dispatchTime().
inline constexpr DispatchTime DispatchTimeNow = 0;
/// A time that is never reached.
inline constexpr DispatchTime DispatchTimeForever = ~DispatchTime{0};

/// Returns the point in time `nanoseconds` after `when` (before it if negative), truncated to whole
/// ticks. The result is at least 1. It is DispatchTimeForever if it exceeds the clock's range or if
/// `when` is DispatchTimeForever.
[[nodiscard]] TQ_EXPORT DispatchTime dispatchTime(DispatchTime when,
                                                  std::int64_t nanoseconds) noexcept;

}  // namespace tq
