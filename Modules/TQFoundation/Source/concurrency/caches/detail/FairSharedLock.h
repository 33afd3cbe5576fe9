#pragma once

/// @file FairSharedLock.h
/// A reader-writer lock whose writers wait only for the readers before them.

#include <atomic>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Lock.h>
#include <TQFoundation/platform/threads/SharedLock.h>

namespace tq::detail {

/// The system's reader-writer lock behind a gate. A writer holds the gate while it waits, so that
/// new readers queue up behind it. A thread that already reads any lock of this class passes the
/// gate: a writer may be waiting for that very thread.
///
/// Threads:   any. The thread that locked must unlock.
/// Recursion: a reader may lock for reading again. A writer must not lock again; that stops the
///            process. A reader must not lock for writing.
class TQ_CAPABILITY("fair shared lock") FairSharedLock {
 public:
  FairSharedLock() = default;
  FairSharedLock(const FairSharedLock&) = delete;
  FairSharedLock& operator=(const FairSharedLock&) = delete;

  void lockForRead() TQ_ACQUIRE_SHARED();
  void unlockForRead() noexcept TQ_RELEASE_GENERIC();
  void lockForWrite() TQ_ACQUIRE();
  void unlockForWrite() noexcept TQ_RELEASE();

  /// Returns the number of writers that wait. For tests.
  [[nodiscard]] int waitingWriters() const noexcept { return waitingWriters_; }

 private:
  std::atomic<int> waitingWriters_{0};
  Lock gate_;
  SharedLock lock_;
};

/// Hold the lock until the end of the scope.
class TQ_SCOPED_CAPABILITY FairReadLocked {
 public:
  explicit FairReadLocked(FairSharedLock& lock) TQ_ACQUIRE_SHARED(lock) : lock_(lock) {
    lock_.lockForRead();
  }
  ~FairReadLocked() TQ_RELEASE_GENERIC() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_.unlockForRead(); }
  FairReadLocked(const FairReadLocked&) = delete;
  FairReadLocked& operator=(const FairReadLocked&) = delete;

 private:
  FairSharedLock& lock_;
};

class TQ_SCOPED_CAPABILITY FairWriteLocked {
 public:
  explicit FairWriteLocked(FairSharedLock& lock) TQ_ACQUIRE(lock) : lock_(lock) {
    lock_.lockForWrite();
  }
  ~FairWriteLocked() TQ_RELEASE() { lock_.unlockForWrite(); }
  FairWriteLocked(const FairWriteLocked&) = delete;
  FairWriteLocked& operator=(const FairWriteLocked&) = delete;

 private:
  FairSharedLock& lock_;
};

}  // namespace tq::detail
