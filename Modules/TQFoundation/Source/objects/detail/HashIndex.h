#pragma once

/// @file HashIndex.h
/// A hash index over the positions of a list.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tq::detail {

/// Maps hashes to positions in a list that its owner keeps. Open addressing with linear probing, at
/// most half full.
class HashIndex {
 public:
  /// The number of positions that fit.
  [[nodiscard]] std::size_t capacity() const noexcept { return slots_.size() / 2; }

  /// Returns the first position inserted under `hash` for which `matches(position)` is true.
  /// `matches` may also be called for positions of other hashes.
  template <class Matches>
  [[nodiscard]] std::optional<std::size_t> find(std::size_t hash, Matches&& matches) const {
    if (slots_.empty()) return std::nullopt;
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = spread(hash) & mask; slots_[at] != 0; at = (at + 1) & mask) {
      const std::size_t position = slots_[at] - 1;
      if (matches(position)) return position;
    }
    return std::nullopt;
  }

  /// Inserts a position. There must be free capacity.
  void insert(std::size_t hash, std::size_t position) noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = spread(hash) & mask;
    while (slots_[at] != 0) at = (at + 1) & mask;
    slots_[at] = static_cast<std::uint32_t>(position + 1);
  }

  /// Removes all positions and keeps the capacity.
  void clear() noexcept { std::ranges::fill(slots_, 0u); }

  /// Removes all positions and reserves capacity for at least twice `count`. Strong guarantee.
  void reset(std::size_t count) {
    std::vector<std::uint32_t> slots(std::bit_ceil(4 * count));
    slots_.swap(slots);
  }

 private:
  /// Hashes of small numbers and of addresses differ in only a few bits.
  [[nodiscard]] static std::size_t spread(std::size_t hash) noexcept {
    hash *= 0x9E3779B97F4A7C15u;
    return hash ^ (hash >> 32);
  }

  std::vector<std::uint32_t> slots_;  // size is a power of two; position + 1, or 0 for empty
};

}  // namespace tq::detail
