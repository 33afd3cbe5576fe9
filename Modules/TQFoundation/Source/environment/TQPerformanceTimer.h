#pragma once

/// @file TQPerformanceTimer.h
/// Durations in ticks of the steady clock, and delays with chance in them.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/threads/TickClock.h>

namespace tq {

/// Reads the timebase, once in the process; later calls do nothing. Any thread, like all of these.
TQ_EXPORT void TQPerformanceTimingInitialise();

/// The steady clock, in ticks.
[[nodiscard]] inline std::uint64_t TQTimeNow() noexcept { return monotonicTicks(); }

/// end - start in ticks; wraps when the end lies before the start.
[[nodiscard]] constexpr std::uint64_t TQDurationBetween(std::uint64_t start,
                                                        std::uint64_t end) noexcept {
  return end - start;
}

/// Ticks from `start` to now.
[[nodiscard]] inline std::uint64_t TQDurationSince(std::uint64_t start) noexcept {
  return TQTimeNow() - start;
}

/// Ticks as seconds: multiplied by the timebase's numerator in 64 bits, which wraps for very long
/// durations, then divided by the denominator, whole nanoseconds. Before
/// TQPerformanceTimingInitialise() it stops the process.
[[nodiscard]] TQ_EXPORT double TQTimeIntervalsForDuration(std::uint64_t ticks);

/// Seconds from `base` to `base` + `jitter`, all as likely; the end itself only where the sum
/// rounds to it. Just `base` when the jitter is not positive, or not a number.
[[nodiscard]] TQ_EXPORT double TQTimeRandomInterval(double base, double jitter) noexcept;

/// The same in nanoseconds, truncated; saturates at the ends of the range, NaN is 0.
[[nodiscard]] TQ_EXPORT std::int64_t TQTimeRandomDispatchTimeDelta(double base,
                                                                   double jitter) noexcept;

/// The point in time that far from now.
[[nodiscard]] TQ_EXPORT DispatchTime TQTimeRandomDispatchDelay(double base, double jitter) noexcept;

}  // namespace tq
