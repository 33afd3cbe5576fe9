#pragma once

/// @file Lock.h
/// Mutexes of the operating system, and a guard that holds any lock for a scope.

#include <pthread.h>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>

namespace tq {

/// The system's mutex. It is not std::mutex, because its header takes long to compile.
///
/// Threads:   any. The thread that locked must unlock.
/// Recursion: not allowed. Locking twice on one thread, and unlocking a lock that the thread does
///            not hold, is undefined.
class TQ_EXPORT TQ_CAPABILITY("mutex") Lock {
 public:
  constexpr Lock() noexcept = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  /// Blocks until the calling thread holds the lock.
  void lock() TQ_ACQUIRE() { pthread_mutex_lock(&mutex_); }
  /// Locks if no thread holds the lock. Does not block.
  /// @return whether the calling thread holds the lock now
  [[nodiscard]] bool tryLock() TQ_TRY_ACQUIRE(true) { return pthread_mutex_trylock(&mutex_) == 0; }
  /// Releases the lock.
  void unlock() TQ_RELEASE() { pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

/// The system's recursive mutex: the thread that holds it may lock it again, and must unlock it as
/// many times.
class TQ_EXPORT TQ_CAPABILITY("recursive mutex") RecursiveLock {
 public:
  constexpr RecursiveLock() noexcept = default;
  RecursiveLock(const RecursiveLock&) = delete;
  RecursiveLock& operator=(const RecursiveLock&) = delete;

  /// Blocks until the calling thread holds the lock.
  void lock() TQ_ACQUIRE() { pthread_mutex_lock(&mutex_); }
  /// Locks if no other thread holds the lock. Does not block.
  /// @return whether the calling thread holds the lock now
  [[nodiscard]] bool tryLock() TQ_TRY_ACQUIRE(true) { return pthread_mutex_trylock(&mutex_) == 0; }
  /// Releases the lock once.
  void unlock() TQ_RELEASE() { pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_ = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

/// Holds a lock during its lifetime.
template <class L>
class TQ_SCOPED_CAPABILITY Locked {
 public:
  /// Locks `lock`, which must outlive this object.
  explicit Locked(L& lock) TQ_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
  ~Locked() TQ_RELEASE() { lock_.unlock(); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  L& lock_;
};

}  // namespace tq
