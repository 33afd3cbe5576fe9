#pragma once

/// @file RTreeSplitter.h
/// Plans the quadratic split of a leaf that overflows.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/spatial/detail/RTreeNodeCore.h>

namespace tq::detail {

/// Plans splits. It keeps its working memory from one split to the next.
class RTreeSplitter {
 public:
  /// Reserves memory for `count` entries, so that plan() cannot fail.
  void reserve(std::size_t count);

  /// Divides the entries of `leaf`, which must be at least two. Entries that enlarge their groups
  /// equally keep their order.
  void plan(const RTreeNodeCore& leaf) noexcept;

  /// The rects of the leaf at the time of plan().
  [[nodiscard]] std::span<const Rect> rects() const noexcept { return rects_; }

  /// The positions of the first group's entries, then those of the second group's. In each group
  /// the seed is first.
  [[nodiscard]] std::span<const std::uint32_t> order() const noexcept { return order_; }
  [[nodiscard]] std::size_t firstGroupCount() const noexcept { return firstGroupCount_; }

 private:
  struct Seeds {
    std::size_t first = 0;
    std::size_t second = 0;
  };

  /// An entry, how much it enlarges the rect of each group's seed, and the group that it joins.
  struct Pending {
    double increase[2];
    std::uint32_t index;
    std::uint32_t group;
  };

  [[nodiscard]] Seeds chooseSeeds(const RTreeNodeCore& leaf) noexcept;
  [[nodiscard]] Seeds chooseSeedsLiterally() const noexcept;
  void sortPending() noexcept;

  std::vector<Rect> rects_;
  std::vector<double> areas_;
  std::vector<Pending> pending_;
  std::vector<std::uint32_t> order_;
  std::size_t firstGroupCount_ = 0;
};

}  // namespace tq::detail
