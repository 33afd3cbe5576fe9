#pragma once

/// @file MonitorCount.h
/// Counts the object monitors in use, for tests.

#include <cstddef>

namespace tq::detail {

/// Returns the number of objects whose monitor is reserved, or a thread has entered or waits
/// for. Any thread.
[[nodiscard]] std::size_t monitorCount();

}  // namespace tq::detail
