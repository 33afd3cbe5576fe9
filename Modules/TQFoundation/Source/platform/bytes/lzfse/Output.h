#pragma once

/// @file Output.h
/// The output buffer of the decoders.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

namespace tq::lzfse {

/// Fills a buffer from front to back; a match repeats earlier bytes. Nothing is checked: the caller
/// must compare counts with the free space, and distances with the bytes produced.
class Output {
 public:
  explicit Output(std::span<std::byte> room) noexcept
      : begin_(room.data()), cursor_(room.data()), end_(room.data() + room.size()) {}

  [[nodiscard]] std::size_t produced() const noexcept {
    return static_cast<std::size_t>(cursor_ - begin_);
  }
  [[nodiscard]] std::size_t room() const noexcept {
    return static_cast<std::size_t>(end_ - cursor_);
  }

  void append(const std::byte* bytes, std::size_t count) noexcept {
    if (count > 0) std::memcpy(cursor_, bytes, count);
    cursor_ += count;
  }

  /// Like append(), but `bytes` must be followed by kStride readable bytes. Most runs are short and
  /// take one step without a call.
  void appendPadded(const std::byte* bytes, std::size_t count) noexcept {
    if (room() < count + kStride) return append(bytes, count);
    std::byte* to = cursor_;
    cursor_ += count;
    do {
      std::memcpy(to, bytes, kStride);
      to += kStride;
      bytes += kStride;
    } while (to < cursor_);
  }

  /// Copies `count` bytes from `distance` bytes back, in increasing order: a distance below the
  /// count repeats a pattern.
  void repeat(std::size_t distance, std::size_t count) noexcept {
    std::byte* to = cursor_;
    const std::byte* from = to - distance;
    if (distance < kStride || room() < count + kStride) return repeatClosely(distance, count);
    cursor_ += count;
    do {
      std::memcpy(to, from, kStride);
      to += kStride;
      from += kStride;
    } while (to < cursor_);
  }

  /// Readable bytes that must follow a run given to appendPadded().
  static constexpr std::size_t kStride = 16;

 private:
  /// Neither reads nor writes beyond the last byte. The pattern doubles with every step.
  void repeatClosely(std::size_t distance, std::size_t count) noexcept {
    const std::byte* const from = cursor_ - distance;
    while (count > 0) {
      const std::size_t step = std::min(distance, count);
      std::memcpy(cursor_, from, step);
      cursor_ += step;
      count -= step;
      distance += step;
    }
  }

  std::byte* begin_;
  std::byte* cursor_;
  std::byte* end_;
};

}  // namespace tq::lzfse
