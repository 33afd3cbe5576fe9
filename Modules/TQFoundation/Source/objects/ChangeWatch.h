#pragma once

/// @file ChangeWatch.h
/// Notices changes of growable containers.

#include <cstdint>

#include <TQFoundation/base/TQExport.h>

namespace tq {

class Array;
class Dictionary;

namespace detail {

/// Knows whether a container has changed since the watch began. Fixed containers never change. The
/// container must exist while it is asked. The cost is one comparison.
class ChangeWatch {
 public:
  /// Watches nothing.
  ChangeWatch() noexcept = default;
  explicit ChangeWatch(const Array& array) noexcept;            // in Array.h
  explicit ChangeWatch(const Dictionary& dictionary) noexcept;  // in Dictionary.h

  /// True if elements were added, removed, replaced or moved in memory.
  [[nodiscard]] bool hasChanged() const noexcept { return counter_ != nullptr && *counter_ != at_; }

  /// @throws Exception (GenericException) if hasChanged()
  void requireUnchanged() const {
    if (hasChanged()) raise();
  }

 private:
  explicit ChangeWatch(const std::uint64_t* counter) noexcept
      : counter_(counter), at_(counter != nullptr ? *counter : 0) {}
  [[noreturn]] TQ_EXPORT static void raise();

  const std::uint64_t* counter_ = nullptr;  // of the container; null if it is fixed
  std::uint64_t at_ = 0;                    // its value when the watch began
};

}  // namespace detail
}  // namespace tq
