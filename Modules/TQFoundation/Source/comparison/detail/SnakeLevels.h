#pragma once

/// @file SnakeLevels.h
/// What a search for an edit script remembers of every level it has gone through.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <TQFoundation/base/TQExport.h>

namespace tq::detail {

/// A snake is one edit and the stretch of a diagonal that follows it. Where it ends is known going
/// back from the end of the last one, so that nothing but its edit and its length need be kept:
///
///   codes    2 bits a snake, 32 of them a word:  bit 0  the edit moved down (an insertion)
///                                                bit 1  the diagonal was followed
///   lengths  8 bytes for each snake whose bit 1 is set, in the order of the snakes
///
/// Most snakes of a search through unlike arrays have no length: two of 10,000 elements with
/// nothing in common take 25 MB instead of the 4.8 GB of a record with two positions and a link.
class SnakeLevels {
 public:
  static constexpr std::uint64_t kDown = 1;
  static constexpr std::uint64_t kFollowed = 2;
  static constexpr std::size_t kSnakesPerWord = 32;

  struct Snake {
    bool movedDown;
    std::size_t length;  ///< elements of the diagonal that were followed
  };

  /// Makes room for a level of `count` snakes on the diagonals `lowest`, `lowest` + 2, … What a
  /// level wrote that was never committed is forgotten.
  /// @return where the words of codes go
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

  /// Committed levels, which is also the number of edits of the last one.
  [[nodiscard]] std::size_t count() const noexcept { return levels_.size(); }

  /// The snake on a diagonal of the level that has `edits` of them, 1 being the first.
  [[nodiscard]] TQ_EXPORT Snake snake(std::size_t edits, std::int64_t diagonal) const noexcept;

  /// Bytes held for the snakes, without what the containers keep in reserve.
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
