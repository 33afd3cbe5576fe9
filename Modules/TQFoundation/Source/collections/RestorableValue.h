#pragma once

/// @file RestorableValue.h
/// A value that is changed for a while and then put back.

#include <optional>
#include <utility>

namespace tq {

/// Remembers the value that it had before the first set() since the last restore(). A value itself;
/// not synchronised.
template <class Value>
class RestorableValue {
 public:
  /// A value that is not changed.
  explicit RestorableValue(Value value) : value_(std::move(value)) {}

  /// The current value.
  [[nodiscard]] const Value& value() const noexcept { return value_; }

  /// Changes the value; the first time since the last restore() the one before is remembered.
  void set(Value value) {
    if (!saved_) saved_.emplace(value_);
    value_ = std::move(value);
  }

  /// Puts the remembered value back; without one nothing happens.
  void restore() {
    if (!saved_) return;
    value_ = std::move(*saved_);
    saved_.reset();
  }

  /// True while a value is remembered, be it equal to the current one.
  [[nodiscard]] bool isChanged() const noexcept { return saved_.has_value(); }

 private:
  Value value_;
  std::optional<Value> saved_;
};

/// Sets a variable for the length of a scope, and puts back what was there when the scope is left,
/// by whichever way. Scopes nest. The variable must outlive the scope, and moving a value into it
/// must not throw.
template <class Value>
class ScopedValue {
 public:
  /// Moves `value` into `variable`, and keeps what was there.
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
