#pragma once

/// @file ResettableLazy.h
/// A lazy value that can be reset.

#include <functional>
#include <optional>
#include <utility>

namespace tq {

/// A value that is loaded at its first read, and again at the first read after reset(). If the
/// loader throws, no value is stored. Threads: one at a time.
template <class T>
class ResettableLazy {
 public:
  /// @param loader  returns the value; called at the first read after construction or reset()
  explicit ResettableLazy(std::function<T()> loader) : loader_(std::move(loader)) {}

  /// Returns the value, loaded if necessary. The reference is valid until the value is set or
  /// reset. The value may be changed through it.
  [[nodiscard]] T& wrappedValue() {
    if (!value_) value_ = loader_();
    return *value_;
  }
  void setWrappedValue(T value) { value_ = std::move(value); }

  /// True if the next read does not call the loader.
  [[nodiscard]] bool isLoaded() const noexcept { return value_.has_value(); }
  /// Discards the value. The next read loads it again.
  void reset() noexcept { value_.reset(); }

 private:
  std::optional<T> value_;
  std::function<T()> loader_;
};

}  // namespace tq
