#pragma once

/// @file Collectable.h
/// A value that goes back to what it was when it is collected.

#include <concepts>
#include <utility>

namespace tq {

/// Holds a value and the one that it was made with, its default. A value itself.
template <std::copyable Value>
class Collectable {
 public:
  /// The value is its own default.
  explicit Collectable(Value wrappedValue)
      : defaultValue_(wrappedValue), wrappedValue_(std::move(wrappedValue)) {}

  /// What it was made with.
  [[nodiscard]] const Value& defaultValue() const noexcept { return defaultValue_; }
  /// What it holds now; setting leaves the default as it is.
  [[nodiscard]] const Value& wrappedValue() const noexcept { return wrappedValue_; }
  void setWrappedValue(Value value) { wrappedValue_ = std::move(value); }

  /// The current value, handed out; the default takes its place.
  Value collect() {
    Value next = defaultValue_;
    return std::exchange(wrappedValue_, std::move(next));
  }

  /// The same as collect(): reading it resets the value, on purpose.
  Value projectedValue() { return collect(); }

  /// By the current values alone; the defaults may differ.
  friend bool operator==(const Collectable& a,
                         const Collectable& b) requires std::equality_comparable<Value> {
    return a.wrappedValue_ == b.wrappedValue_;
  }

 private:
  Value defaultValue_;
  Value wrappedValue_;
};

}  // namespace tq
