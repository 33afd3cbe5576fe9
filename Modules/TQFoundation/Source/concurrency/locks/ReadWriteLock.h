#pragma once

/// @file ReadWriteLock.h
/// A reader-writer lock as an object.

#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/threads/SharedLock.h>

namespace tq {

/// A reader-writer lock with shared ownership. Create it with makeRef<ReadWriteLock>().
///
/// Threads:   any. The thread that locked must unlock.
/// Recursion: a reader may lock for reading again. A reader must not lock for writing: it would
///            wait for itself. A writer must not lock again at all; that stops the process.
/// Lifetime:  releasing the last reference while a thread holds the lock stops the process.
/// Fairness:  the operating system's; readers are preferred.
class TQ_EXPORT TQ_CAPABILITY("reader-writer lock") ReadWriteLock final
    : public Subclass<ReadWriteLock> {
 public:
  static constexpr std::string_view className = "ReadWriteLock";
  ~ReadWriteLock() override;

  class ReadLock;
  class WriteLock;

  /// Return the read and the write side as Lockable types. They keep this lock alive.
  [[nodiscard]] ReadLock read() noexcept;
  [[nodiscard]] WriteLock write() noexcept;

  /// Locks for reading. Any number of threads may read at once.
  void lockForRead() noexcept TQ_ACQUIRE_SHARED() TQ_NO_THREAD_SAFETY_ANALYSIS {
    lock_.lockForRead();
  }
  /// Locks for writing, exclusively.
  void lockForWrite() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_.lockForWrite(); }
  /// Releases the lock, whether it is held for reading or for writing.
  void unlock() noexcept TQ_RELEASE_GENERIC() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_.unlock(); }

  /// Runs `execute` with the lock held for reading or for writing, and returns its result. The lock
  /// is released in every case. Exceptions of the closure propagate.
  template <class F>
  decltype(auto) protectedRead(F&& execute);
  template <class F>
  decltype(auto) protectedWrite(F&& execute);

 private:
  SharedLock lock_;
};

/// The older name of the class.
using TQReadWriteLock = ReadWriteLock;

/// The read side of a ReadWriteLock.
class TQ_EXPORT TQ_CAPABILITY("read lock") ReadWriteLock::ReadLock {
 public:
  /// Lock for reading, and release.
  void lock() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->lockForRead(); }
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->unlock(); }

 private:
  friend class ReadWriteLock;
  explicit ReadLock(ReadWriteLock& lock) noexcept : lock_(&lock) {}

  Ref<ReadWriteLock> lock_;
};

/// The write side of a ReadWriteLock.
class TQ_EXPORT TQ_CAPABILITY("write lock") ReadWriteLock::WriteLock {
 public:
  /// Lock for writing, and release.
  void lock() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->lockForWrite(); }
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->unlock(); }

 private:
  friend class ReadWriteLock;
  explicit WriteLock(ReadWriteLock& lock) noexcept : lock_(&lock) {}

  Ref<ReadWriteLock> lock_;
};

inline ReadWriteLock::ReadLock ReadWriteLock::read() noexcept { return ReadLock(*this); }
inline ReadWriteLock::WriteLock ReadWriteLock::write() noexcept { return WriteLock(*this); }

/// Holds a lock for reading until the end of the scope.
class TQ_SCOPED_CAPABILITY ReadLocked {
 public:
  /// Locks for reading. The lock must outlive this object.
  explicit ReadLocked(ReadWriteLock& lock) noexcept TQ_ACQUIRE_SHARED(lock) : lock_(lock) {
    lock_.lockForRead();
  }
  ~ReadLocked() TQ_RELEASE_GENERIC() { lock_.unlock(); }
  ReadLocked(const ReadLocked&) = delete;
  ReadLocked& operator=(const ReadLocked&) = delete;

 private:
  ReadWriteLock& lock_;
};

/// Holds a lock for writing until the end of the scope.
class TQ_SCOPED_CAPABILITY WriteLocked {
 public:
  /// Locks for writing. The lock must outlive this object.
  explicit WriteLocked(ReadWriteLock& lock) noexcept TQ_ACQUIRE(lock) : lock_(lock) {
    lock_.lockForWrite();
  }
  ~WriteLocked() TQ_RELEASE() { lock_.unlock(); }
  WriteLocked(const WriteLocked&) = delete;
  WriteLocked& operator=(const WriteLocked&) = delete;

 private:
  ReadWriteLock& lock_;
};

template <class F>
decltype(auto) ReadWriteLock::protectedRead(F&& execute) {
  const ReadLocked guard(*this);
  return std::forward<F>(execute)();
}

template <class F>
decltype(auto) ReadWriteLock::protectedWrite(F&& execute) {
  const WriteLocked guard(*this);
  return std::forward<F>(execute)();
}

}  // namespace tq
