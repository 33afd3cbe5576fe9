#pragma once

/// @file ResettableLazy.h
/// A value loaded when it is first read, and again after a reset.

#include <functional>
#include <optional>
#include <utility>

namespace tq {

/// Not synchronised. A loader that throws leaves nothing loaded.
template <class T>
class ResettableLazy {
 public:
  /// @param loader  makes the value; runs at the first read after construction or reset()
  explicit ResettableLazy(std::function<T()> loader) : loader_(std::move(loader)) {}

  /// The value, loaded if need be; lent until it is set or reset, and open to change in place.
  [[nodiscard]] T& wrappedValue() {
    if (!value_) value_ = loader_();
    return *value_;
  }
  void setWrappedValue(T value) { value_ = std::move(value); }

  /// True when the next read does not run the loader.
  [[nodiscard]] bool isLoaded() const noexcept { return value_.has_value(); }
  /// Forgets the value; the next read loads again.
  void reset() noexcept { value_.reset(); }

 private:
  std::optional<T> value_;
  std::function<T()> loader_;
};

}  // namespace tq
