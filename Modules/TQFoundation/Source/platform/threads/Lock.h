#pragma once

/// @file Lock.h
/// The operating system's mutexes, and a scope that holds any lock.

#include <mutex>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>

namespace tq {

/// The system's mutex. Threads: any; the thread that locked is the one that unlocks. Locking twice
/// on one thread, or unlocking what is not held, is the caller's fault and undefined.
class TQ_EXPORT TQ_CAPABILITY("mutex") Lock {
 public:
  /// Waits for the lock.
  void lock() TQ_ACQUIRE() { mutex_.lock(); }
  /// Takes the lock if nobody has it.
  /// @return whether it did
  [[nodiscard]] bool tryLock() TQ_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
  /// Lets the lock go.
  void unlock() TQ_RELEASE() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

/// The system's recursive mutex: the thread that holds it may lock it again, and unlocks it as
/// often.
class TQ_EXPORT TQ_CAPABILITY("recursive mutex") RecursiveLock {
 public:
  /// Waits for the lock.
  void lock() TQ_ACQUIRE() { mutex_.lock(); }
  /// Takes the lock if nobody else has it.
  /// @return whether it did
  [[nodiscard]] bool tryLock() TQ_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
  /// Lets the lock go, once for each time it was taken.
  void unlock() TQ_RELEASE() { mutex_.unlock(); }

 private:
  std::recursive_mutex mutex_;
};

/// Holds a lock for as long as it lives.
template <class L>
class TQ_SCOPED_CAPABILITY Locked {
 public:
  /// Waits for `lock`, which must outlive this.
  explicit Locked(L& lock) TQ_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
  ~Locked() TQ_RELEASE() { lock_.unlock(); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  L& lock_;
};

}  // namespace tq
