#pragma once

/// @file HashIndex.h
/// Finds positions of a list by hash.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tq::detail {

/// Where the elements of a list stand, by their hashes; the list is its owner's. Open addressing
/// with linear probing, at most half full.
class HashIndex {
 public:
  /// How many positions there is room for.
  [[nodiscard]] std::size_t capacity() const noexcept { return slots_.size() / 2; }

  /// The first position put in under `hash` for which `matches(position)` holds; positions put in
  /// under other hashes may be asked about.
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

  /// There must be room.
  void insert(std::size_t hash, std::size_t position) noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = spread(hash) & mask;
    while (slots_[at] != 0) at = (at + 1) & mask;
    slots_[at] = static_cast<std::uint32_t>(position + 1);
  }

  /// Forgets all positions and keeps the room.
  void clear() noexcept { std::ranges::fill(slots_, 0u); }

  /// Forgets all positions and makes room for twice `count`. Strong guarantee.
  void reset(std::size_t count) {
    std::vector<std::uint32_t> slots(std::bit_ceil(4 * count));
    slots_.swap(slots);
  }

 private:
  /// Hashes of small numbers and of addresses differ in a few bits alone.
  [[nodiscard]] static std::size_t spread(std::size_t hash) noexcept {
    hash *= 0x9E3779B97F4A7C15u;
    return hash ^ (hash >> 32);
  }

  std::vector<std::uint32_t> slots_;  // a power of two of them; position + 1, 0 is empty
};

}  // namespace tq::detail
