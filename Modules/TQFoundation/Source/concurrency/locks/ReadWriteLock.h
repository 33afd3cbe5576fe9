#pragma once

/// @file ReadWriteLock.h
/// Many readers or one writer.

#include <functional>
#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/threads/SharedLock.h>

namespace tq {

/// A reader-writer lock that others can hold on to. Made by makeRef<ReadWriteLock>().
///
/// Threads:   any; the thread that locked is the one that unlocks.
/// Recursion: a reader may read again. A reader must not ask for writing: it would wait for itself.
///            A writer must not lock again at all; debug builds stop at that.
/// Order:     the system's: readers are preferred.
class TQ_EXPORT TQ_CAPABILITY("reader-writer lock") ReadWriteLock final
    : public Subclass<ReadWriteLock> {
 public:
  static constexpr std::string_view className = "ReadWriteLock";

  class ReadLock;
  class WriteLock;

  /// Views that keep this lock alive: Lockable, for code that takes any lock.
  [[nodiscard]] ReadLock read() noexcept;
  [[nodiscard]] WriteLock write() noexcept;

  /// Waits for a shared hold; any number of threads may have one at once.
  void lockForRead() noexcept TQ_ACQUIRE_SHARED() TQ_NO_THREAD_SAFETY_ANALYSIS {
    lock_.lockForRead();
  }
  /// Waits for the exclusive hold.
  void lockForWrite() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_.lockForWrite(); }
  /// Lets go of either kind of hold.
  void unlock() noexcept TQ_RELEASE_GENERIC() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_.unlock(); }

  /// Runs `execute` under the shared or the exclusive lock and answers its result. The lock is free
  /// again in every case; what the closure throws passes through.
  template <class F>
  decltype(auto) protectedRead(F&& execute);
  template <class F>
  decltype(auto) protectedWrite(F&& execute);

 private:
  SharedLock lock_;
};

/// The older name, under which the lock is known to much of the host.
using TQReadWriteLock = ReadWriteLock;

/// The shared side of a lock.
class TQ_EXPORT TQ_CAPABILITY("read lock") ReadWriteLock::ReadLock {
 public:
  /// Takes, and lets go of, a shared hold.
  void lock() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->lockForRead(); }
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->unlock(); }

 private:
  friend class ReadWriteLock;
  explicit ReadLock(ReadWriteLock& lock) noexcept : lock_(&lock) {}

  Ref<ReadWriteLock> lock_;
};

/// The exclusive side of a lock.
class TQ_EXPORT TQ_CAPABILITY("write lock") ReadWriteLock::WriteLock {
 public:
  /// Takes, and lets go of, the exclusive hold.
  void lock() noexcept TQ_ACQUIRE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->lockForWrite(); }
  void unlock() noexcept TQ_RELEASE() TQ_NO_THREAD_SAFETY_ANALYSIS { lock_->unlock(); }

 private:
  friend class ReadWriteLock;
  explicit WriteLock(ReadWriteLock& lock) noexcept : lock_(&lock) {}

  Ref<ReadWriteLock> lock_;
};

inline ReadWriteLock::ReadLock ReadWriteLock::read() noexcept { return ReadLock(*this); }
inline ReadWriteLock::WriteLock ReadWriteLock::write() noexcept { return WriteLock(*this); }

/// Holds a lock for reading, or for writing, for as long as it lives.
class TQ_SCOPED_CAPABILITY ReadLocked {
 public:
  /// Waits for a shared hold on `lock`, which must outlive this.
  explicit ReadLocked(ReadWriteLock& lock) noexcept TQ_ACQUIRE_SHARED(lock) : lock_(lock) {
    lock_.lockForRead();
  }
  ~ReadLocked() TQ_RELEASE_GENERIC() { lock_.unlock(); }
  ReadLocked(const ReadLocked&) = delete;
  ReadLocked& operator=(const ReadLocked&) = delete;

 private:
  ReadWriteLock& lock_;
};

/// Holds a lock for writing for as long as it lives.
class TQ_SCOPED_CAPABILITY WriteLocked {
 public:
  /// Waits for the exclusive hold on `lock`, which must outlive this.
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
  return std::invoke(std::forward<F>(execute));
}

template <class F>
decltype(auto) ReadWriteLock::protectedWrite(F&& execute) {
  const WriteLocked guard(*this);
  return std::invoke(std::forward<F>(execute));
}

}  // namespace tq
