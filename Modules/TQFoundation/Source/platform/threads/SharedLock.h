#pragma once

/// @file SharedLock.h
/// The operating system's reader-writer lock.

#include <errno.h>
#include <pthread.h>

#include <cassert>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>

namespace tq {

/// Many readers or one writer, with the system's default attributes: readers are preferred, so that
/// a thread may read while it reads, and writers may wait for as long as readers keep coming.
///
/// Results of the system's calls are ignored. Asking to write, or to read, on the thread that
/// writes is refused by the system (EDEADLK) and takes nothing: the unlock that follows then lets
/// go of the outer hold. Debug builds stop at that instead. Asking to write on a thread that reads
/// never returns.
class TQ_EXPORT TQ_CAPABILITY("shared lock") SharedLock {
 public:
  SharedLock() noexcept { ::pthread_rwlock_init(&lock_, nullptr); }
  ~SharedLock() { ::pthread_rwlock_destroy(&lock_); }
  SharedLock(const SharedLock&) = delete;
  SharedLock& operator=(const SharedLock&) = delete;

  /// Waits for a shared hold.
  void lockForRead() noexcept TQ_ACQUIRE_SHARED() { check(::pthread_rwlock_rdlock(&lock_)); }
  /// Waits for the exclusive hold.
  void lockForWrite() noexcept TQ_ACQUIRE() { check(::pthread_rwlock_wrlock(&lock_)); }
  /// Lets go of either kind of hold; only on the thread that has it.
  void unlock() noexcept TQ_RELEASE_GENERIC() { ::pthread_rwlock_unlock(&lock_); }

 private:
  static void check([[maybe_unused]] int result) noexcept {
    assert(result != EDEADLK && "the thread holds this lock for writing already");
  }

  pthread_rwlock_t lock_{};
};

}  // namespace tq
