#pragma once

/// @file RTreeIndex.h
/// An index of the bounds that a tree stores, for fast queries.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/spatial/detail/RTreeNodeCore.h>

namespace tq::detail {

/// What an index knows about the answer to a query.
enum class RTreeFinding {
  none,    ///< nothing intersects
  unsure,  ///< something intersects, but rounding of directory rects may hide it from the recursion
  found,   ///< the recursion finds it too
};

/// How the bounds of a tree are affected by rounding.
class RTreePrecision {
 public:
  void add(const RTreeBounds& bounds) noexcept;

  /// Returns how far the maximum of a directory rect can be below the maxima of the elements under
  /// it. NaN if that has no limit.
  [[nodiscard]] double margin(std::size_t height, std::size_t entries) const noexcept;

 private:
  double largest_ = 0;   // magnitude of all bounds
  bool isWild_ = false;  // a bound is NaN, infinite or too large for sums
  bool isExact_ = true;  // sums and differences of all bounds are exact
};

/// A query as an index compares it.
struct RTreeQuery {
  RTreeBounds bounds;
  double sureMinX;  ///< the recursion finds an element whose maxima reach these
  double sureMinY;
};

/// The bounds of eight elements. Unused entries are those of null rects.
struct alignas(64) RTreeBucket {
  RTreeBoundsPair pairs[4];

  RTreeBucket() noexcept;
  void set(std::size_t index, const RTreeBounds& bounds) noexcept;
  [[nodiscard]] RTreeBounds at(std::size_t index) const noexcept;
  [[nodiscard]] RTreeFinding find(const RTreeQuery& query) const noexcept;
};

struct NarrowBounds;

/// An immutable packed R-tree over bounds.
class RTreeRun {
 public:
  /// @param all  not empty, without NaN
  explicit RTreeRun(std::vector<RTreeBounds> all);

  [[nodiscard]] std::size_t count() const noexcept { return count_; }
  [[nodiscard]] RTreeFinding find(const RTreeQuery& query) const noexcept;
  void appendTo(std::vector<RTreeBounds>& all) const;

 private:
  static constexpr std::size_t kWidth = 16;

  /// The bounds of sixteen children relative to the origin, in single precision.
  struct alignas(64) Inner {
    float minX[kWidth];
    float minY[kWidth];
    float maxX[kWidth];
    float maxY[kWidth];

    Inner() noexcept;
    [[nodiscard]] unsigned hits(const NarrowBounds& bounds) const noexcept;
  };

  [[nodiscard]] NarrowBounds narrowed(const RTreeBounds& bounds) const noexcept;

  std::size_t count_;
  double originX_ = 0;
  double originY_ = 0;
  std::vector<RTreeBucket> buckets_;
  std::vector<Inner> inner_;  // level by level, the one above the buckets first
  std::array<std::uint32_t, 8> levelStarts_{};
  std::size_t levelCount_ = 0;
};

/// The bounds of all elements of a tree: packed runs, whose sizes decrease, and a tail of new ones.
class RTreeIndex {
 public:
  /// Indexes all elements below `root`.
  /// @throws std::bad_alloc
  explicit RTreeIndex(const RTreeNodeCore& root);

  /// Returns what is known about `bounds` in a tree of `height` levels with at most `entries`
  /// entries in a node.
  [[nodiscard]] RTreeFinding find(const RTreeBounds& bounds, std::size_t height,
                                  std::size_t entries) const noexcept;

  /// Adds a rect to the tail.
  /// @throws std::bad_alloc; then the index is unchanged
  void append(const Rect& rect);

  [[nodiscard]] std::size_t tailCount() const noexcept { return tailCount_; }
  [[nodiscard]] std::size_t tailBuckets() const noexcept { return tail_.size(); }

  /// Returns the same index with the tail packed, together with the small runs, but not more than
  /// `limit` elements apart from the tail. The other runs are shared.
  /// @throws std::bad_alloc
  [[nodiscard]] std::unique_ptr<RTreeIndex> packed(std::size_t limit) const;

  /// An index that this one replaced while queries may have been using it.
  std::unique_ptr<const RTreeIndex> replaced;

 private:
  RTreeIndex() = default;

  RTreePrecision precision_;
  std::vector<std::shared_ptr<const RTreeRun>> runs_;
  std::vector<RTreeBucket> tail_;
  std::size_t tailCount_ = 0;
};

}  // namespace tq::detail
