#pragma once

/// @file TQArrayComparison.h
/// The shortest way to make one array into another, an element at a time.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQComparisonArrayChange.h>
#include <TQFoundation/comparison/detail/SnakeLevels.h>
#include <TQFoundation/objects/Array.h>

namespace tq {

/// Whether two elements are the same: (old element, its index, new element, its index). The indexes
/// always lie inside the arrays. It may say what it likes, even of the same two at another time: an
/// edit script leads from the old array to the new one all the same, if not the shortest.
using TQArrayComparator = std::function<bool(Object&, std::size_t, Object&, std::size_t)>;

/// The first position in the old array, from `x` on along the diagonal k = x - y, where the
/// elements differ or one of the arrays ends.
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

/// The moves among `changes`, linked: each insertion takes the first removal left, by falling
/// index, that the comparator calls the same.
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

/// One run of a difference: the shortest list of removals and insertions that leads from the old
/// array to the new one. editSequenceTo() is what callers use.
///
/// The search is the forward greedy one of Myers, "An O(ND) Difference Algorithm and Its
/// Variations" (1986). Level d holds the furthest point that d edits reach on each diagonal; the
/// levels are filled by rising diagonal until one reaches the end of both arrays.
///
/// Cost:    O((N + M) · D) calls of the comparator for D edits. A quarter of a byte for each of the
///          up to D² / 2 furthest points, and 8 bytes for each that matching elements lead to.
/// Failure: what the comparator throws and std::bad_alloc pass through; changes() can be asked
/// again. Threads: one at a time. The arrays outlive the comparison and do not change meanwhile.
template <class Comparator = TQArrayComparator>
class TQArrayComparison {
 public:
  /// `startPoint`: the length of a prefix known to be the same, which is never compared again. It
  /// must not take up both arrays: then there is nothing to search for.
  TQArrayComparison(const Array& oldArray, const Array& modifiedArray, std::size_t startPoint,
                    Comparator comparator)
      : oldArray_(oldArray.objects()),
        modifiedArray_(modifiedArray.objects()),
        comparator_(std::move(comparator)),
        furthest_{kNowhere, signedOf(startPoint), kNowhere} {}

  /// Links removals with insertions of the same element, which makes them moves. The comparator is
  /// called again for it, for each insertion with the removals that are left.
  void inferMoves() { detail::linkMoves(changes(), comparator_); }

  /// Computed when first asked for.
  [[nodiscard]] const TQArrayChanges& changes() {
    if (!changes_) computeChanges();
    return *changes_;
  }

  /// What is compared, lent: the arrays as they were when the comparison was made.
  [[nodiscard]] std::span<const Ref<Object>> oldArray() const noexcept { return oldArray_; }
  [[nodiscard]] std::size_t oldArrayCount() const noexcept { return oldArray_.size(); }
  [[nodiscard]] std::span<const Ref<Object>> modifiedArray() const noexcept {
    return modifiedArray_;
  }
  [[nodiscard]] std::size_t modifiedArrayCount() const noexcept { return modifiedArray_.size(); }
  /// Whether two elements count as the same.
  [[nodiscard]] const Comparator& comparator() const noexcept { return comparator_; }
  /// How far each number of edits reached, for tests and drawings.
  [[nodiscard]] const detail::SnakeLevels& furthestPath() const noexcept { return levels_; }

 private:
  // A point's x stands for no point at all: less than every other, and its neighbours' choice.
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

  // The last level: the x reached on the diagonals lowest_, lowest_ + 2, …, between two guards.
  std::vector<std::int64_t> furthest_;
  std::vector<std::int64_t> next_;
  std::int64_t lowest_ = 0;
  bool isWalledBelow_ = false;  // the diagonal below lowest_ has left the arrays for good
  bool isWalledAbove_ = false;
  bool isAtEnd_ = false;
};

/// Fills one more level. @return whether it reached the end of both arrays, where it stops at once
//
// A point outside the arrays, past the end of one of them, makes its neighbours of the next level
// lie outside too, and an end that is reached first lies on a path that never left them. So a level
// need not go beyond the outermost diagonals that have left the arrays: nothing would be compared
// there, and nothing inside hangs on it.
template <class Comparator>
bool TQArrayComparison<Comparator>::fillNextDiffPath() {
  const std::size_t walls = (isWalledBelow_ ? 1U : 0U) + (isWalledAbove_ ? 1U : 0U);
  const std::size_t count = furthest_.size() - 1 - walls;
  const std::int64_t lowest = lowest_ + (isWalledBelow_ ? 1 : -1);
  next_.resize(count + 2);
  std::uint64_t* codes = levels_.startLevel(count, lowest);

  // What the last level reached on the diagonal below each of this one's, and on the one above.
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

/// Where an edit from `previousX` and the diagonal behind it lead.
template <class Comparator>
std::int64_t TQArrayComparison<Comparator>::findFurthestSnakeForItem(std::int64_t previousX,
                                                                     std::int64_t withDiagonal,
                                                                     bool movingAcross) {
  const std::int64_t start = movingAcross ? previousX + 1 : previousX;
  return signedOf(FurthestXOnDiagonal(oldArray_, modifiedArray_, withDiagonal,
                                      static_cast<std::size_t>(start), comparator_));
}

/// Drops the outermost points that lie outside the arrays.
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

/// The edits that lead to (x, y), a point of the last level. Going back meets the removals by
/// falling index, as they are wanted, and the insertions the other way round.
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
