#pragma once

/// @file Collectable.h
/// Values that are reset to their default when they are read.

#include <concepts>
#include <utility>

namespace tq {

/// Holds a value and its default, the value that it was constructed with. A value type.
template <std::copyable Value>
class Collectable {
 public:
  /// Constructs it with `wrappedValue`, which is also the default.
  explicit Collectable(Value wrappedValue)
      : defaultValue_(wrappedValue), wrappedValue_(std::move(wrappedValue)) {}

  /// The value that it was constructed with.
  [[nodiscard]] const Value& defaultValue() const noexcept { return defaultValue_; }
  /// The current value. Setting it does not change the default.
  [[nodiscard]] const Value& wrappedValue() const noexcept { return wrappedValue_; }
  void setWrappedValue(Value value) { wrappedValue_ = std::move(value); }

  /// Returns the current value and resets it to the default.
  Value collect() {
    Value next = defaultValue_;
    return std::exchange(wrappedValue_, std::move(next));
  }

  /// An alias of collect(). Reading it resets the value, on purpose.
  Value projectedValue() { return collect(); }

  /// Compares the current values only; the defaults may differ.
  friend bool operator==(const Collectable& a,
                         const Collectable& b) requires std::equality_comparable<Value> {
    return a.wrappedValue_ == b.wrappedValue_;
  }

 private:
  Value defaultValue_;
  Value wrappedValue_;
};

}  // namespace tq
