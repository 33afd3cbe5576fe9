#pragma once

/// @file SnakeLevels.h
/// Compact storage for the levels of Myers' search.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <TQFoundation/base/TQExport.h>

namespace tq::detail {

/// A snake is one edit and the matching elements that follow it on a diagonal. The way back starts
/// at the known end, so only the kind of edit and the length of each snake are stored:
///
///   codes    2 bits a snake, 32 of them a word:  bit 0  the edit moved down (an insertion)
///                                                bit 1  the diagonal was followed
///   lengths  8 bytes for each snake whose bit 1 is set, in the order of the snakes
///
/// In very different arrays, most snakes have no matching elements. Two arrays of 10,000 elements
/// with nothing in common take 25 MB; records of two positions and a link would take 4.8 GB.
class SnakeLevels {
 public:
  static constexpr std::uint64_t kDown = 1;
  static constexpr std::uint64_t kFollowed = 2;
  static constexpr std::size_t kSnakesPerWord = 32;

  struct Snake {
    bool movedDown;
    std::size_t length;  ///< number of matching elements
  };

  /// Begins a level of `count` snakes on the diagonals `lowest`, `lowest` + 2, … Discards the
  /// previous level if it was not committed.
  /// @return where the caller must write the words of codes
  [[nodiscard]] std::uint64_t* startLevel(std::size_t count, std::int64_t lowest) {
    pending_ = {usedWords_, usedLengths_, lowest};
    codes_.resize(usedWords_ + (count + kSnakesPerWord - 1) / kSnakesPerWord);
    lengths_.resize(usedLengths_);
    return codes_.data() + usedWords_;
  }

  void addLength(std::size_t length) { lengths_.push_back(length); }

  void commitLevel() {
    levels_.push_back(pending_);
    usedWords_ = codes_.size();
    usedLengths_ = lengths_.size();
  }

  /// Returns the number of committed levels, which is the number of edits of the last one.
  [[nodiscard]] std::size_t count() const noexcept { return levels_.size(); }

  /// Returns the snake on a diagonal of the level with `edits` edits. The first level has 1.
  [[nodiscard]] TQ_EXPORT Snake snake(std::size_t edits, std::int64_t diagonal) const noexcept;

  /// Returns the number of bytes used, without spare capacity of the containers.
  [[nodiscard]] std::size_t byteCount() const noexcept {
    return usedWords_ * sizeof(std::uint64_t) + usedLengths_ * sizeof(std::size_t) +
           levels_.size() * sizeof(Level);
  }

 private:
  struct Level {
    std::size_t firstWord = 0;
    std::size_t firstLength = 0;
    std::int64_t lowest = 0;
  };

  std::vector<std::uint64_t> codes_;
  std::vector<std::size_t> lengths_;
  std::vector<Level> levels_;
  std::size_t usedWords_ = 0;
  std::size_t usedLengths_ = 0;
  Level pending_;
};

}  // namespace tq::detail
