#pragma once

/// @file UnfairLock.h
/// Mutual exclusion in 4 bytes.

#include <atomic>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Thread.h>

namespace tq {

/// Mutual exclusion for short critical sections, in 4 bytes.
///
/// Threads:    any. The thread that locked must unlock. Unlocking on another thread stops the
///             process: "Unlock of an os_unfair_lock not owned by current thread".
/// Recursion:  not allowed. Locking twice stops the process: "Trying to recursively lock an
///             os_unfair_lock".
/// Fairness:   none; a late waiter may get the lock first.
/// Memory:     writes before unlock() are visible after the next lock().
/// Lifetime:   must not be destroyed while a thread holds it or waits for it.
/// Waiting:    spins for a short time, then sleeps in the kernel.
/// Priority:   not inherited, on purpose. The kernel passes on priorities only between real-time
///             threads, which a desktop program does not have. It would then also hand over the
///             lock itself at every contended unlock, with a thread switch each time.
class TQ_EXPORT TQ_CAPABILITY("lock") UnfairLock {
 public:
  UnfairLock() noexcept { detail::lockMade(this); }
  ~UnfairLock() { detail::lockGone(this); }
  UnfairLock(const UnfairLock&) = delete;
  UnfairLock& operator=(const UnfairLock&) = delete;

  /// Blocks until the lock is free and acquires it.
  void lock() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS {
    detail::willLock(this);
    const std::uint32_t self = currentThreadNumber();
    std::uint32_t found = 0;
    // Acquire: pairs with the release in unlock().
    if (!word_.compare_exchange_strong(found, self, std::memory_order_acquire,
                                       std::memory_order_relaxed)) {
      lockSlowly(self, found);
    }
    detail::didLock(this);
  }

  /// Releases the lock.
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS {
    detail::willUnlock(this);
    const std::uint32_t self = currentThreadNumber();
    std::uint32_t found = self;
    // Release: the next thread to lock sees what this thread wrote.
    if (!word_.compare_exchange_strong(found, 0, std::memory_order_release,
                                       std::memory_order_relaxed)) {
      unlockSlowly(self, found);
    }
    detail::didUnlock(this);
  }

 private:
  void lockSlowly(std::uint32_t self, std::uint32_t found) noexcept;
  void unlockSlowly(std::uint32_t self, std::uint32_t found) noexcept;

  std::atomic<std::uint32_t> word_{0};  // its values: see detail/UnfairWord.h
};
static_assert(sizeof(UnfairLock) == 4);

}  // namespace tq
