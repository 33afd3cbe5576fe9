#pragma once

/// @file FilledData.h
/// Fixed data that is written in place.

#include <cstddef>
#include <cstring>
#include <span>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Data.h>

namespace tq::detail {

/// Fixed data that its creator fills before passing it on.
class FilledData final : public Data {
 public:
  explicit FilledData(std::size_t capacity) { reserveBytes(capacity); }

  /// The whole capacity, including the bytes already written.
  [[nodiscard]] std::span<std::byte> room() noexcept { return {bytes_, capacity_}; }

  void grow(std::size_t capacity) { reserveBytes(capacity); }

  /// Makes the first `length` bytes of room() the content.
  void setLength(std::size_t length) noexcept {
    TQ_ASSERT(length <= capacity_);
    length_ = length;
    if (capacity_ > 0) std::memset(bytes_ + length, 0, kReadablePadding);
  }
};

}  // namespace tq::detail
