#pragma once

/// @file PoolThreads.h
/// Threads for work that may block.

#include <functional>

namespace tq::detail {

/// Runs `work` once on a thread of its own, which is created unless one is idle, and leaves it
/// empty. Exceptions that leave the work stop the process. Any thread.
/// @return false, with `work` unchanged, if there is no thread or no memory
[[nodiscard]] bool runOnPoolThread(std::function<void()>& work) noexcept;

}  // namespace tq::detail
