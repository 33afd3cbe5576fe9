#pragma once

/// @file Lockable.h
/// The concept of a lock, and running a closure under any lock.

#include <type_traits>
#include <utility>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

/// A type with lock() and unlock(): UnfairLock, Lock, RecursiveLock, the views of a ReadWriteLock,
/// ObjectSynchronizer, Unsynchronized, and the mutexes of the C++ library.
template <class L>
concept Lockable = requires(std::remove_reference_t<L>& lock) {
  lock.lock();
  lock.unlock();
};

/// Runs `execute` with the lock held and returns its result. The lock is released afterwards in
/// every case. Exceptions of the closure propagate.
template <Lockable L, class F>
decltype(auto) sync(L&& lock, F&& execute) TQ_NO_THREAD_SAFETY_ANALYSIS {
  const Locked guard(lock);
  return std::forward<F>(execute)();
}

/// The same for types that run closures themselves and have no lock(): SerialQueue.
template <class P, class F>
requires(!Lockable<P> && requires(P & p, F&& f) { p.sync(std::forward<F>(f)); }) decltype(auto)
    sync(P& primitive, F&& execute) {
  return primitive.sync(std::forward<F>(execute));
}

/// A type that works with `sync(primitive, closure)`.
template <class P>
concept SynchronizationPrimitive = requires(std::remove_reference_t<P>& primitive) {
  sync(primitive, [] {});
};

/// A lock that does nothing, for code that is generic over locking.
struct Unsynchronized {
  /// Does nothing.
  void lock() noexcept {}
  void unlock() noexcept {}
};

}  // namespace tq
