#pragma once

/// @file Atomic.h
/// A value with serialised access from any thread.

#include <concepts>
#include <functional>
#include <utility>

#include <TQFoundation/platform/threads/SerialQueue.h>

namespace tq {

/// A value whose accesses all run on its own serial queue. Reads and writes take place one at
/// a time, in order of arrival.
///
/// mutate(), increment() and decrement() are atomic. A read followed by a write is not, and neither
/// is modify(): another thread may write in between, and its value is overwritten.
///
/// Threads:   any.
/// Recursion: not allowed. Accessing a value inside its own mutate() stops the process, see
///            SerialQueue.
template <class T>
class Atomic {
 public:
  /// Creates the box with its first value.
  explicit Atomic(T wrappedValue) : value_(std::move(wrappedValue)) {}
  Atomic(const Atomic&) = delete;
  Atomic& operator=(const Atomic&) = delete;

  /// Returns a copy of the value, made on the queue.
  [[nodiscard]] T wrappedValue() const {
    return queue_.sync([this] { return value_; });
  }

  /// Replaces the value. The previous value is destroyed off the queue, so its destructor may
  /// access this box.
  void setWrappedValue(T value) {
    queue_.sync([&] { std::swap(value_, value); });
  }

  /// Reads the value, calls `change` with the copy outside the queue, and writes the copy back as a
  /// second access. Nothing is written if `change` throws.
  template <std::invocable<T&> F>
  void modify(F&& change) {
    T value = wrappedValue();
    std::invoke(std::forward<F>(change), value);
    setWrappedValue(std::move(value));
  }

  /// Returns the box itself.
  [[nodiscard]] Atomic& projectedValue() noexcept { return *this; }

  /// Calls `change` with the value itself, as one access, and returns its result. Exceptions of
  /// `change` propagate; the value stays as `change` left it.
  template <std::invocable<T&> F>
  decltype(auto) mutate(F&& change) {
    return queue_.sync(
        [&]() -> decltype(auto) { return std::invoke(std::forward<F>(change), value_); });
  }

  /// Adds or subtracts 1 as one access. Overflow is undefined for signed types.
  void increment() requires std::integral<T> {
    queue_.sync([this] { ++value_; });
  }
  void decrement() requires std::integral<T> {
    queue_.sync([this] { --value_; });
  }

 private:
  mutable SerialQueue queue_{"Atomic queue"};
  T value_;  // accessed only on queue_
};

}  // namespace tq
