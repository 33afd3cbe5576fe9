#pragma once

/// @file Atomic.h
/// A value that any thread may read and change.

#include <concepts>
#include <functional>
#include <utility>

#include <TQFoundation/platform/threads/SerialQueue.h>

namespace tq {

/// A value whose every access is a trip onto a serial queue of its own, so that all reads and
/// writes are in one order, that of their coming.
///
/// mutate(), increment() and decrement() are indivisible. Reading and then writing is two trips,
/// and so is modify(): another thread may write in between, and is overwritten.
///
/// Threads:   any.
/// Recursion: none; an access from inside mutate() on the same box stops the process, see
///            SerialQueue.
template <class T>
class Atomic {
 public:
  /// A box that holds the value.
  explicit Atomic(T wrappedValue) : value_(std::move(wrappedValue)) {}
  Atomic(const Atomic&) = delete;
  Atomic& operator=(const Atomic&) = delete;

  /// A copy of the value, made inside the box.
  [[nodiscard]] T wrappedValue() const {
    return queue_.sync([this] { return value_; });
  }

  /// The value before goes away after the trip: its destructor may call back in.
  void setWrappedValue(T value) {
    queue_.sync([&] { std::swap(value_, value); });
  }

  /// Reads in one trip, lets `change` work on the copy outside the queue, and writes it back in a
  /// second trip. Nothing is written when `change` throws.
  template <std::invocable<T&> F>
  void modify(F&& change) {
    T value = wrappedValue();
    std::invoke(std::forward<F>(change), value);
    setWrappedValue(std::move(value));
  }

  /// The box itself, where its value stands for it elsewhere.
  [[nodiscard]] Atomic& projectedValue() noexcept { return *this; }

  /// Runs `change` on the value itself, in one trip, and answers its result. What it throws passes
  /// through; the value stays as it was left.
  template <std::invocable<T&> F>
  decltype(auto) mutate(F&& change) {
    return queue_.sync(
        [&]() -> decltype(auto) { return std::invoke(std::forward<F>(change), value_); });
  }

  /// Adds or subtracts 1, in one trip. Beyond the type's limits is the caller's fault.
  void increment() requires std::integral<T> {
    queue_.sync([this] { ++value_; });
  }
  void decrement() requires std::integral<T> {
    queue_.sync([this] { --value_; });
  }

 private:
  mutable SerialQueue queue_{"Atomic queue"};
  T value_;  // touched on queue_ alone
};

}  // namespace tq
