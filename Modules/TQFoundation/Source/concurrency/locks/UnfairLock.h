#pragma once

/// @file UnfairLock.h
/// The smallest and fastest lock.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/concurrency/locks/UnfairWord.h>
#include <TQFoundation/platform/threads/ThreadSystem.h>

namespace tq {

/// Mutual exclusion for short stretches of code, in 4 bytes.
///
/// Threads:    any; the thread that locked is the one that unlocks. Unlocking on another stops the
///             process: "Unlock of an os_unfair_lock not owned by current thread".
/// Recursion:  none; locking twice stops: "Trying to recursively lock an os_unfair_lock".
/// Order:      none among waiters; a late one may be served first.
/// Memory:     what was written before unlock() is seen after the next lock().
/// Lifetime:   may go away only while nobody holds it or waits for it.
/// Waiting:    spins for a moment, then sleeps in the kernel.
/// Priority:   not inherited, on purpose. The kernel lends priority only between real-time threads,
///             which a desktop program has none of, and its price is a handing over by the kernel
///             at every contended unlock, that is a switch of threads for each.
class TQ_EXPORT TQ_CAPABILITY("lock") UnfairLock {
 public:
  UnfairLock() noexcept { detail::lockMade(this); }
  ~UnfairLock() { detail::lockGone(this); }
  UnfairLock(const UnfairLock&) = delete;
  UnfairLock& operator=(const UnfairLock&) = delete;

  /// Waits for the lock. Not twice on one thread.
  void lock() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS {
    detail::willLock(this);
    word_.lock();
    detail::didLock(this);
  }

  /// Lets the lock go; only on the thread that took it.
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS {
    detail::willUnlock(this);
    word_.unlock();
    detail::didUnlock(this);
  }

 private:
  detail::UnfairWord<detail::ThreadSystem> word_;
};
static_assert(sizeof(UnfairLock) == 4);

}  // namespace tq
