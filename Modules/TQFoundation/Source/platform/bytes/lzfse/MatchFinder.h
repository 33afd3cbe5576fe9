#pragma once

/// @file MatchFinder.h
/// Finds earlier occurrences of the bytes that come next.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {

/// The `length` bytes at `start` equal those `distance` bytes before. Length 0: no match.
struct Match {
  std::size_t start = 0;
  std::size_t length = 0;
  std::size_t distance = 0;

  [[nodiscard]] std::size_t end() const noexcept { return start + length; }
};

/// Returns the number of equal leading bytes at two positions, at most `most`.
[[nodiscard]] inline std::size_t commonLength(const std::byte* a, const std::byte* b,
                                              std::size_t most) noexcept {
  std::size_t length = 0;
  for (; length + sizeof(std::uint64_t) <= most; length += sizeof(std::uint64_t)) {
    const std::uint64_t difference =
        load<std::uint64_t>(a + length) ^ load<std::uint64_t>(b + length);
    if (difference != 0) return length + static_cast<std::size_t>(std::countr_zero(difference)) / 8;
  }
  while (length < most && a[length] == b[length]) ++length;
  return length;
}

/// Returns `match` extended backwards to `earliest`, as far as the bytes agree.
[[nodiscard]] inline Match extendedBackwards(Match match, const std::byte* plain,
                                             std::size_t earliest) noexcept {
  while (match.start > earliest && match.start > match.distance &&
         plain[match.start - 1] == plain[match.start - 1 - match.distance]) {
    --match.start;
    ++match.length;
  }
  return match;
}

/// A hash table of positions in the plain data, keyed by the four bytes there, or by six where
/// short matches save no bits. Each bucket has the latest four positions with that hash, and their
/// bytes, so that most false candidates are rejected without reading the plain data. Positions are
/// stored modulo 2^32; an entry that is too old is rejected because its bytes differ.
class MatchFinder {
 public:
  /// @param plain  more than 8 bytes; must outlive the finder. Throws nothing: see isReady()
  explicit MatchFinder(std::span<const std::byte> plain) noexcept
      : plain_(plain.data()),
        size_(plain.size()),
        shift_(64 - setBits(plain.size())),
        sets_(new (std::nothrow) Set[std::size_t{1} << setBits(plain.size())]) {
    TQ_ASSERT(size_ > kTail);
    shortest_.fill(kShortest);
  }

  [[nodiscard]] bool isReady() const noexcept { return sets_ != nullptr; }

  /// Returns the first position that cannot be looked up or recorded.
  [[nodiscard]] std::size_t end() const noexcept { return size_ - kTail; }

  /// Returns the longest match at `place` that takes fewer bits than its literals, the nearest of
  /// equally long ones. Then records the position. Positions must increase from call to call.
  [[nodiscard]] Match findAndRecord(std::size_t place) noexcept {
    const Key key = keyAt(place);
    const std::byte* const here = plain_ + place;
    const std::size_t most = size_ - place;
    Set& set = sets_[key.set];
    Match best;
    for (std::size_t i = 0; i < kWays; ++i) {
      if (set.values[i] != key.value) continue;
      const std::uint32_t distance = static_cast<std::uint32_t>(place) - set.places[i];
      if (distance - 1 >= kMostDistance) continue;
      const std::size_t needed = std::max<std::size_t>(
          best.length + 1, shortest_[static_cast<std::size_t>(std::bit_width(distance))]);
      const std::byte* const there = here - distance;
      if (needed > most || here[needed - 1] != there[needed - 1]) continue;
      const std::size_t length = commonLength(here, there, most);
      if (length >= needed) best = {place, length, distance};
    }
    set.record(static_cast<std::uint32_t>(place), key.value);
    return best;
  }

  /// Sets how many bits a literal currently takes. If these are few, a short match from far away
  /// takes more bits than its literals, and is no longer returned. Initially all matches are.
  void setLiteralBits(double bits) noexcept {
    keyBytes_ = bits < kCheapLiteralBits ? kLongKey : kShortest;
    for (std::size_t digits = 0; digits < shortest_.size(); ++digits) {
      std::size_t length = kShortest;
      while (length < kAlwaysWorthwhile && bits < kCheapLiteralBits &&
             static_cast<double>(length) * bits < kMatchBits + static_cast<double>(digits)) {
        ++length;
      }
      shortest_[digits] = static_cast<std::uint8_t>(length);
    }
  }

  void record(std::size_t place) noexcept {
    const Key key = keyAt(place);
    sets_[key.set].record(static_cast<std::uint32_t>(place), key.value);
  }

 private:
  static constexpr std::size_t kWays = 4;
  static constexpr unsigned kShortest = 4;
  static constexpr std::size_t kTail = 8;
  static constexpr std::size_t kAlwaysWorthwhile = 8;
  static constexpr unsigned kLongKey = 6;
  // Measured on documents, source code and prose: the bits of a match without its distance, and the
  // limit above which the average cost of literals is not meaningful.
  static constexpr double kMatchBits = 8;
  static constexpr double kCheapLiteralBits = 5;
  static constexpr std::uint64_t kMultiplier = 0x9e3779b97f4a7c15;  // 2^64 over the golden ratio
  static constexpr unsigned kFewestSetBits = 10;
  static constexpr unsigned kMostSetBits = 15;
  /// Larger than any distance from the first positions.
  static constexpr std::uint32_t kNowhere = std::uint32_t{1} << 31;

  using Ways = std::uint32_t __attribute__((vector_size(kWays * sizeof(std::uint32_t))));

  /// The latest position comes first.
  struct alignas(32) Set {
    Ways places = {kNowhere, kNowhere, kNowhere, kNowhere};
    Ways values = {};

    void record(std::uint32_t place, std::uint32_t value) noexcept {
      places = __builtin_shufflevector(places, Ways{place}, 4, 0, 1, 2);
      values = __builtin_shufflevector(values, Ways{value}, 4, 0, 1, 2);
    }
  };

  /// One bucket for every four positions, within limits.
  [[nodiscard]] static unsigned setBits(std::size_t size) noexcept {
    const auto bits = static_cast<unsigned>(std::bit_width(size / kWays));
    return std::clamp(bits, kFewestSetBits, kMostSetBits);
  }

  struct Key {
    std::size_t set;
    std::uint32_t value;
  };

  /// Key of the bytes at a position: as many as a match must have choose the bucket, and the last
  /// four of them are stored. Entries from before that number changed are not found, or rejected.
  [[nodiscard]] Key keyAt(std::size_t place) const noexcept {
    const auto word = load<std::uint64_t>(plain_ + place);
    return {(word << (64 - 8 * keyBytes_)) * kMultiplier >> shift_,
            static_cast<std::uint32_t>(word >> (8 * keyBytes_ - 32))};
  }

  const std::byte* plain_;
  std::size_t size_;
  /// Returns the length of the shortest match that saves bits at a distance of so many binary
  /// digits.
  std::array<std::uint8_t, std::bit_width(kMostDistance) + 1> shortest_;
  unsigned shift_;
  unsigned keyBytes_ = kShortest;
  std::unique_ptr<Set[]> sets_;
};

}  // namespace tq::lzfse
