#pragma once

/// @file FilledData.h
/// Fixed buffers that are written in place.

#include <cstddef>
#include <span>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Data.h>

namespace tq::detail {

/// A fixed buffer that its maker fills before anyone else sees it.
class FilledData final : public Data {
 public:
  explicit FilledData(std::size_t capacity) { reserveBytes(capacity); }

  /// All the room there is, what is filled included.
  [[nodiscard]] std::span<std::byte> room() noexcept { return {bytes_, capacity_}; }

  void grow(std::size_t capacity) { reserveBytes(capacity); }

  /// The first `length` bytes of the room are the buffer's content.
  void setLength(std::size_t length) noexcept {
    TQ_ASSERT(length <= capacity_);
    length_ = length;
  }
};

}  // namespace tq::detail
