#pragma once

/// @file TQPerformanceTimer.h
/// Durations in ticks of the steady clock, and random delays.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/threads/TickClock.h>

namespace tq {

/// Reads the timebase of the clock. Later calls do nothing. Threads: any, for all functions here.
TQ_EXPORT void TQPerformanceTimingInitialise();

/// Returns the time of the steady clock, in ticks.
[[nodiscard]] inline std::uint64_t TQTimeNow() noexcept { return monotonicTicks(); }

/// Returns end - start in ticks. Wraps around if `end` is before `start`.
[[nodiscard]] constexpr std::uint64_t TQDurationBetween(std::uint64_t start,
                                                        std::uint64_t end) noexcept {
  return end - start;
}

/// Returns the ticks from `start` to now.
[[nodiscard]] inline std::uint64_t TQDurationSince(std::uint64_t start) noexcept {
  return TQTimeNow() - start;
}

/// Converts ticks to seconds, with a resolution of 1 ns. The ticks are multiplied by the timebase's
/// numerator in 64 bits, which wraps around for very long durations, and divided by its
/// denominator. Stops the process if TQPerformanceTimingInitialise() has not been called.
[[nodiscard]] TQ_EXPORT double TQTimeIntervalsForDuration(std::uint64_t ticks);

/// Returns a uniformly distributed random number of seconds from `base` to `base` + `jitter`. The
/// upper end occurs only if the sum rounds to it. Returns `base` if `jitter` is not positive or is
/// NaN.
[[nodiscard]] TQ_EXPORT double TQTimeRandomInterval(double base, double jitter) noexcept;

/// TQTimeRandomInterval() in nanoseconds, truncated. Saturates at the limits of the type; 0 for
/// NaN.
[[nodiscard]] TQ_EXPORT std::int64_t TQTimeRandomDispatchTimeDelta(double base,
                                                                   double jitter) noexcept;

/// Returns the time that is TQTimeRandomDispatchTimeDelta() after now.
[[nodiscard]] TQ_EXPORT DispatchTime TQTimeRandomDispatchDelay(double base, double jitter) noexcept;

}  // namespace tq
