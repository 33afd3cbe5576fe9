#pragma once

/// @file MonitorReservation.h
/// Object monitors whose entry cannot fail.

namespace tq {

class Object;

namespace detail {

/// Allocates the monitor of `object`, so that no thread allocates when it enters it. Any thread.
/// @throws std::bad_alloc, with nothing reserved
void reserveMonitor(const Object& object);

/// Ends a reservation. Must be called once for each, before the object is destroyed. Any thread.
void unreserveMonitor(const Object& object) noexcept;

}  // namespace detail
}  // namespace tq
