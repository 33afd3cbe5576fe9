#pragma once

/// @file TickClockSource.h
/// Replaces the tick clock in tests.

#include <cstdint>

#include <TQFoundation/platform/threads/TickClock.h>

namespace tq::detail {

/// A clock that replaces the system's, so that a test controls the time.
struct TickClockSource {
  std::uint64_t (*ticks)() noexcept;  ///< returns the current time in ticks
  Timebase timebase;                  ///< the length of a tick
};

/// Makes monotonicTicks() and systemTimebase() use `source`, which must outlive its use. Null
/// restores the system's clock. Any thread.
void setTickClockSource(const TickClockSource* source) noexcept;

}  // namespace tq::detail
