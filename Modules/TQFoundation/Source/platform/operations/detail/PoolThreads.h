#pragma once

/// @file PoolThreads.h
/// A pool of threads for work that may block. It grows without limit; idle threads are kept a
/// while.

#include <functional>

namespace tq::detail {

/// Runs `work` on an idle thread or a new one. An exception from `work` stops the process. Any
/// thread.
void runOnPoolThread(std::function<void()> work);

}  // namespace tq::detail
