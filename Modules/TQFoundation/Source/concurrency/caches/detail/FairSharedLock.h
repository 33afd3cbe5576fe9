#pragma once

/// @file FairSharedLock.h
/// A reader-writer lock whose writers wait only for the readers before them.

#include <TQFoundation/base/TQThreadSafety.h>

namespace tq::detail {

/// The lock of a cache. A writer waits only for the readers before it; new readers queue up behind
/// it. A thread that already reads any lock of this class passes: a writer may be waiting for that
/// very thread. Readers on different processors do not write to the same memory.
///
/// Threads:   any. The thread that locked must unlock.
/// Recursion: a reader may lock for reading again. A writer must not lock again; that stops the
///            process. A reader must not lock for writing.
/// Memory:    576 bytes
class TQ_CAPABILITY("fair shared lock") FairSharedLock {
 public:
  /// @throws std::bad_alloc
  FairSharedLock();
  ~FairSharedLock();
  FairSharedLock(const FairSharedLock&) = delete;
  FairSharedLock& operator=(const FairSharedLock&) = delete;

  void lockForRead() noexcept TQ_ACQUIRE_SHARED();
  void unlockForRead() noexcept TQ_RELEASE_GENERIC();
  void lockForWrite() noexcept TQ_ACQUIRE();
  void unlockForWrite() noexcept TQ_RELEASE();

  /// Returns whether a writer waits for readers. For tests.
  [[nodiscard]] bool hasWaitingWriter() const noexcept;

 private:
  struct State;
  State* const state_;  // owned
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
