#pragma once

/// @file SharedLock.h
/// The operating system's reader-writer lock.

#include <cstddef>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>

namespace tq {

/// A lock that many readers or one writer can hold.
///
/// Threads:   any. The thread that locked must unlock.
/// Recursion: a thread that reads may lock for reading again. A thread that writes must not lock
///            again; that stops the process. A thread that reads must not lock for writing; that
///            deadlocks.
/// Lifetime:  destroying the lock while a thread holds it stops the process.
/// Fairness:  readers are preferred. A writer may wait for as long as new readers arrive.
class TQ_EXPORT TQ_CAPABILITY("shared lock") SharedLock {
 public:
  SharedLock() noexcept;
  ~SharedLock();
  SharedLock(const SharedLock&) = delete;
  SharedLock& operator=(const SharedLock&) = delete;

  /// Blocks until the calling thread holds the lock for reading.
  void lockForRead() noexcept TQ_ACQUIRE_SHARED();
  /// Blocks until the calling thread holds the lock for writing.
  void lockForWrite() noexcept TQ_ACQUIRE();
  /// Releases either kind of hold.
  void unlock() noexcept TQ_RELEASE_GENERIC();

 private:
  alignas(void*) std::byte storage_[56];  // the system's lock, whose header users do not need
};

}  // namespace tq
