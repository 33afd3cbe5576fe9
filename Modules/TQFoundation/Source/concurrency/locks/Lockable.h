#pragma once

/// @file Lockable.h
/// What every lock can do, and running a closure under any of them.

#include <functional>
#include <type_traits>
#include <utility>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

/// Whatever can be locked and unlocked: UnfairLock, Lock, RecursiveLock, the views of a
/// ReadWriteLock, ObjectSynchronizer, Unsynchronized, and the mutexes of the C++ library.
template <class L>
concept Lockable = requires(std::remove_reference_t<L>& lock) {
  lock.lock();
  lock.unlock();
};

/// Runs `execute` with the lock held and answers its result. The lock is free again afterwards in
/// every case; what the closure throws passes through.
template <Lockable L, class F>
decltype(auto) sync(L&& lock, F&& execute) TQ_NO_THREAD_SAFETY_ANALYSIS {
  const Locked guard(lock);
  return std::invoke(std::forward<F>(execute));
}

/// The same for what runs closures itself without showing a lock: SerialQueue.
template <class P, class F>
requires(!Lockable<P> && requires(P & p, F&& f) { p.sync(std::forward<F>(f)); }) decltype(auto)
    sync(P& primitive, F&& execute) {
  return primitive.sync(std::forward<F>(execute));
}

/// Whatever closures can be run under: `sync(primitive, closure)`.
template <class P>
concept SynchronizationPrimitive = requires(std::remove_reference_t<P>& primitive) {
  sync(primitive, [] {});
};

/// Locks nothing, for code that is generic over locking.
struct Unsynchronized {
  /// Nothing.
  void lock() noexcept {}
  void unlock() noexcept {}
};

}  // namespace tq
