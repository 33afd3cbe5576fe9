#pragma once

/// @file PoolThreads.h
/// Threads for work that may block: as many as are asked for, kept for a while once they are idle.

#include <functional>

namespace tq::detail {

/// Runs `work` on a thread that is free, or a new one. Any thread. What `work` throws stops the
/// process.
void runOnPoolThread(std::function<void()> work);

}  // namespace tq::detail
