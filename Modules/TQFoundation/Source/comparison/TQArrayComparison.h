#pragma once

/// @file TQArrayComparison.h
/// Shortest edit scripts between arrays (Myers' algorithm).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQComparisonArrayChange.h>
#include <TQFoundation/comparison/detail/SnakeLevels.h>
#include <TQFoundation/objects/Array.h>

namespace tq {

/// Returns whether two elements are the same. Arguments: old element, its index, new element, its
/// index. The indexes are always in range. The result need not be consistent between calls: the
/// edit script then still leads from the old array to the new one, but need not be the shortest.
using TQArrayComparator = std::function<bool(Object&, std::size_t, Object&, std::size_t)>;

/// Follows the diagonal k = x - y from `x` on, and returns the first position in the old array at
/// which the elements differ or one of the arrays ends.
template <class Comparator>
[[nodiscard]] std::size_t FurthestXOnDiagonal(std::span<const Ref<Object>> oldArray,
                                              std::span<const Ref<Object>> newArray,
                                              std::int64_t diagonal, std::size_t x,
                                              Comparator& comparator) {
  std::size_t y = x - static_cast<std::size_t>(diagonal);
  while (y < newArray.size() && x < oldArray.size() &&
         comparator(*oldArray[x], x, *newArray[y], y)) {
    ++x;
    ++y;
  }
  return x;
}

namespace detail {

/// Links the moves among `changes`. Each insertion is linked with the first removal, in descending
/// order of index, that the comparator calls the same and that is not linked yet.
template <class Comparator>
void linkMoves(const TQArrayChanges& changes, Comparator& comparator) {
  const auto insertions = std::ranges::find_if(
      changes, [](const Ref<TQComparisonArrayChange>& change) { return change->isInsertion(); });
  std::vector<TQComparisonArrayChange*> pool;
  for (auto change = changes.begin(); change != insertions; ++change) pool.push_back(change->get());
  for (auto change = insertions; change != changes.end(); ++change) {
    TQComparisonArrayChange& added = **change;
    const auto match = std::ranges::find_if(pool, [&](const TQComparisonArrayChange* removed) {
      return comparator(*removed->object(), removed->index(), *added.object(), added.index());
    });
    if (match == pool.end()) continue;
    added.setAssociatedChange(*match);
    pool.erase(match);
  }
}

}  // namespace detail

/// Computes the shortest list of removals and insertions that leads from the old array to the new
/// one. Callers normally use editSequenceTo().
///
/// The algorithm is the greedy forward search of Myers, "An O(ND) Difference Algorithm and Its
/// Variations" (1986). Level d holds the furthest point that d edits reach on each diagonal. The
/// levels are filled in ascending order of the diagonals, until one reaches the end of both arrays.
///
/// Cost:     O((N + M) · D) calls of the comparator for D edits. Memory: a quarter of a byte for
///           each of the up to D² / 2 furthest points, and 8 bytes for each of them that follows
///           matching elements.
/// Errors:   exceptions of the comparator and std::bad_alloc propagate; changes() may be called
///           again.
/// Threads:  one at a time.
/// Lifetime: the arrays must outlive the comparison and must not change.
template <class Comparator = TQArrayComparator>
class TQArrayComparison {
 public:
  /// @param startPoint  the length of the longest common prefix, which is not compared again. The
  ///                    process stops if it is beyond the end of an array, or the end of both.
  ///                    From a shorter prefix on, the edit script need not be the shortest.
  TQArrayComparison(const Array& oldArray, const Array& modifiedArray, std::size_t startPoint,
                    Comparator comparator)
      : oldArray_(oldArray.objects()),
        modifiedArray_(modifiedArray.objects()),
        comparator_(std::move(comparator)),
        furthest_{kNowhere, signedOf(startPoint), kNowhere} {
    const auto [shorter, longer] = std::minmax({oldArray_.size(), modifiedArray_.size()});
    TQ_ASSERT(startPoint <= shorter && startPoint < longer);
  }

  /// Links removals with insertions of the same element; each such pair is a move. Calls the
  /// comparator for each insertion with the removals that are not linked yet.
  void inferMoves() { detail::linkMoves(changes(), comparator_); }

  /// Returns the edit script. Computed at the first call.
  [[nodiscard]] const TQArrayChanges& changes() {
    if (!changes_) computeChanges();
    return *changes_;
  }

  /// Return the compared arrays.
  [[nodiscard]] std::span<const Ref<Object>> oldArray() const noexcept { return oldArray_; }
  [[nodiscard]] std::size_t oldArrayCount() const noexcept { return oldArray_.size(); }
  [[nodiscard]] std::span<const Ref<Object>> modifiedArray() const noexcept {
    return modifiedArray_;
  }
  [[nodiscard]] std::size_t modifiedArrayCount() const noexcept { return modifiedArray_.size(); }
  /// Returns the comparator.
  [[nodiscard]] const Comparator& comparator() const noexcept { return comparator_; }
  /// Returns the levels of the search, for tests and drawings.
  [[nodiscard]] const detail::SnakeLevels& furthestPath() const noexcept { return levels_; }

 private:
  // The x of a missing point. It is less than every other x, so the search never continues from it.
  static constexpr std::int64_t kNowhere = -1;

  [[nodiscard]] static std::int64_t signedOf(std::size_t n) noexcept {
    return static_cast<std::int64_t>(n);
  }
  [[nodiscard]] std::int64_t oldCount() const noexcept { return signedOf(oldArray_.size()); }
  [[nodiscard]] std::int64_t newCount() const noexcept { return signedOf(modifiedArray_.size()); }

  void computeChanges() {
    while (!isAtEnd_) isAtEnd_ = fillNextDiffPath();
    backTraceChangesFrom(oldCount(), newCount());
  }

  [[nodiscard]] bool fillNextDiffPath();
  [[nodiscard]] std::int64_t findFurthestSnakeForItem(std::int64_t previousX,
                                                      std::int64_t withDiagonal, bool movingAcross);
  [[nodiscard]] bool isOutside(std::int64_t x, std::int64_t diagonal) const noexcept {
    return x > oldCount() || x - diagonal > newCount();
  }
  void keepInside();
  void backTraceChangesFrom(std::int64_t x, std::int64_t y);

  std::optional<TQArrayChanges> changes_;
  std::span<const Ref<Object>> oldArray_;
  std::span<const Ref<Object>> modifiedArray_;
  Comparator comparator_;
  detail::SnakeLevels levels_;

  // The last level: the x reached on the diagonals lowest_, lowest_ + 2, …, between two sentinels.
  std::vector<std::int64_t> furthest_;
  std::vector<std::int64_t> next_;
  std::int64_t lowest_ = 0;
  bool isWalledBelow_ = false;  // no path leads inside the arrays on the diagonal below lowest_
  bool isWalledAbove_ = false;
  bool isAtEnd_ = false;
};

/// Fills the next level. Stops as soon as it reaches the end of both arrays.
/// @return true if it reached the end
//
// From a point outside the arrays (past the end of one of them), all further points are outside
// too. The shortest path never leaves the arrays. So each level stops at the outermost diagonals
// that have left the arrays: nothing is compared beyond them, and nothing inside depends on them.
template <class Comparator>
bool TQArrayComparison<Comparator>::fillNextDiffPath() {
  const std::size_t walls = (isWalledBelow_ ? 1U : 0U) + (isWalledAbove_ ? 1U : 0U);
  const std::size_t count = furthest_.size() - 1 - walls;
  const std::int64_t lowest = lowest_ + (isWalledBelow_ ? 1 : -1);
  next_.resize(count + 2);
  std::uint64_t* codes = levels_.startLevel(count, lowest);

  // The x of the last level on the diagonal below, and on the diagonal above, each diagonal.
  const std::int64_t* const below = furthest_.data() + (isWalledBelow_ ? 1 : 0);
  const std::int64_t* const above = below + 1;
  std::int64_t* const reached = next_.data() + 1;
  for (std::size_t i = 0; i < count;) {
    std::uint64_t word = 0;
    const std::size_t first = i;
    const std::size_t stop = std::min(count, first + detail::SnakeLevels::kSnakesPerWord);
    for (; i < stop; ++i) {
      const bool movedDown = below[i] < above[i];  // a tie moves across
      const std::int64_t previousX = movedDown ? above[i] : below[i];
      const std::int64_t start = previousX + (movedDown ? 0 : 1);
      const std::int64_t diagonal = lowest + 2 * static_cast<std::int64_t>(i);
      const std::int64_t x = findFurthestSnakeForItem(previousX, diagonal, !movedDown);
      reached[i] = x;

      std::uint64_t code = movedDown ? detail::SnakeLevels::kDown : 0;
      if (x != start) {
        code |= detail::SnakeLevels::kFollowed;
        levels_.addLength(static_cast<std::size_t>(x - start));
      }
      word |= code << (2 * (i - first));
      if (x >= oldCount() && x - diagonal >= newCount()) {
        *codes = word;
        levels_.commitLevel();
        return true;
      }
    }
    *codes++ = word;
  }
  levels_.commitLevel();
  next_.front() = next_.back() = kNowhere;
  furthest_.swap(next_);
  lowest_ = lowest;
  keepInside();
  return false;
}

/// Returns the x after an edit at `previousX` and the matching elements that follow it.
template <class Comparator>
std::int64_t TQArrayComparison<Comparator>::findFurthestSnakeForItem(std::int64_t previousX,
                                                                     std::int64_t withDiagonal,
                                                                     bool movingAcross) {
  const std::int64_t start = movingAcross ? previousX + 1 : previousX;
  return signedOf(FurthestXOnDiagonal(oldArray_, modifiedArray_, withDiagonal,
                                      static_cast<std::size_t>(start), comparator_));
}

/// Removes the outermost points that lie outside the arrays.
template <class Comparator>
void TQArrayComparison<Comparator>::keepInside() {
  std::size_t count = furthest_.size() - 2;
  while (isOutside(furthest_[count], lowest_ + 2 * signedOf(count - 1))) {
    furthest_[count--] = kNowhere;
    isWalledAbove_ = true;
  }
  furthest_.resize(count + 2);
  std::size_t below = 0;
  while (isOutside(furthest_[below + 1], lowest_ + 2 * signedOf(below))) ++below;
  if (below == 0) return;
  furthest_.erase(furthest_.begin(), furthest_.begin() + signedOf(below));
  furthest_.front() = kNowhere;
  lowest_ += 2 * signedOf(below);
  isWalledBelow_ = true;
}

/// Stores the edits that lead to (x, y), a point of the last level. The way back visits removals
/// and insertions in descending order of index; the insertions are reversed at the end.
template <class Comparator>
void TQArrayComparison<Comparator>::backTraceChangesFrom(std::int64_t x, std::int64_t y) {
  TQArrayChanges changes;
  TQArrayChanges insertions;
  for (std::size_t edits = levels_.count(); edits > 0; --edits) {
    const detail::SnakeLevels::Snake snake = levels_.snake(edits, x - y);
    x -= signedOf(snake.length);
    y -= signedOf(snake.length);
    if (snake.movedDown) {
      const auto index = static_cast<std::size_t>(--y);
      insertions.push_back(
          TQComparisonArrayChange::insertionChangeForItem(modifiedArray_[index], index));
    } else {
      const auto index = static_cast<std::size_t>(--x);
      changes.push_back(TQComparisonArrayChange::removalChangeForItem(oldArray_[index], index));
    }
  }
  changes.insert(changes.end(), insertions.rbegin(), insertions.rend());
  changes_ = std::move(changes);
}

}  // namespace tq
