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

/// Keeps its working memory from split to split.
class RTreeSplitter {
 public:
  /// Room for a plan over `count` entries, so that plan() cannot fail.
  void reserve(std::size_t count);

  /// Divides the entries of `leaf`, two at least. Entries that enlarge their group alike keep
  /// their order.
  void plan(const RTreeNodeCore& leaf) noexcept;

  /// The rects of the leaf as they stood when the plan was made.
  [[nodiscard]] std::span<const Rect> rects() const noexcept { return rects_; }

  /// Positions of the first group's entries, then those of the second's; each seed comes first.
  [[nodiscard]] std::span<const std::uint32_t> order() const noexcept { return order_; }
  [[nodiscard]] std::size_t firstGroupCount() const noexcept { return firstGroupCount_; }

 private:
  struct Seeds {
    std::size_t first = 0;
    std::size_t second = 0;
  };

  /// An entry, how much it enlarges the rect of each group, and the group that it joins.
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
