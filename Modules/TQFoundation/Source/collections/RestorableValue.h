#pragma once

/// @file RestorableValue.h
/// Values that are changed temporarily and then restored.

#include <optional>
#include <utility>

namespace tq {

/// A value that can be restored. The first set() after construction or restore() saves the value
/// before it. A value type; not synchronised.
template <class Value>
class RestorableValue {
 public:
  /// A value with nothing saved.
  explicit RestorableValue(Value value) : value_(std::move(value)) {}

  /// Returns the current value.
  [[nodiscard]] const Value& value() const noexcept { return value_; }

  /// Changes the value. Saves the previous one unless a value is saved already.
  void set(Value value) {
    if (!saved_) saved_.emplace(value_);
    value_ = std::move(value);
  }

  /// Restores the saved value. Does nothing if no value is saved.
  void restore() {
    if (!saved_) return;
    value_ = std::move(*saved_);
    saved_.reset();
  }

  /// True if a value is saved, even if it equals the current one.
  [[nodiscard]] bool isChanged() const noexcept { return saved_.has_value(); }

 private:
  Value value_;
  std::optional<Value> saved_;
};

/// Sets a variable until the end of a scope, then restores its previous value, also when an
/// exception leaves the scope. Scopes may be nested. The variable must outlive the scope, and move
/// assignment to it must not throw.
template <class Value>
class ScopedValue {
 public:
  /// Moves `value` into `variable` and saves the previous value.
  [[nodiscard]] ScopedValue(Value& variable, Value value)
      : variable_(variable), before_(std::exchange(variable, std::move(value))) {}
  ~ScopedValue() { variable_ = std::move(before_); }
  ScopedValue(const ScopedValue&) = delete;
  ScopedValue& operator=(const ScopedValue&) = delete;

 private:
  Value& variable_;
  Value before_;
};

}  // namespace tq
