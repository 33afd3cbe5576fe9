#pragma once

/// @file RTreeCore.h
/// Insertion and search in an R-tree, independent of the element type.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/spatial/detail/RTreeNodeCore.h>
#include <TQFoundation/spatial/detail/RTreeSplitter.h>

namespace tq::detail {

class TQ_EXPORT RTreeCore {
 public:
  /// @param root  an empty leaf, which also creates all later nodes
  RTreeCore(Ref<RTreeNodeCore> root, std::int64_t capacity);

  [[nodiscard]] RTreeNodeCore& root() const noexcept { return *root_; }
  [[nodiscard]] std::int64_t capacity() const noexcept { return capacity_; }

  /// Inserts the element at `element`, which is moved from.
  /// @throws std::bad_alloc; then the tree and the element are unchanged
  void insert(const Rect& rect, void* element);

  [[nodiscard]] bool intersects(const Rect& rect) const;

 private:
  struct Step {
    RTreeNodeCore* directory;
    std::size_t index;
  };
  struct Frame;

  [[nodiscard]] RTreeNodeCore& descend(const Rect& rect);
  void prepare(RTreeNodeCore& leaf);
  [[nodiscard]] bool isFull(const RTreeNodeCore& node) const noexcept;
  [[nodiscard]] Ref<RTreeNodeCore> splitLeaf(RTreeNodeCore& leaf) noexcept;
  [[nodiscard]] Ref<RTreeNodeCore> splitDirectory(RTreeNodeCore& directory) noexcept;
  void ascend(Rect childRect, Ref<RTreeNodeCore> sibling) noexcept;
  [[nodiscard]] bool search(const RTreeBounds& bounds, Frame* frames) const noexcept;

  Ref<RTreeNodeCore> root_;
  std::int64_t capacity_;
  std::size_t height_ = 1;

  // The working memory of an insertion, kept for the next one.
  std::vector<Step> path_;  // from the root to the leaf
  std::vector<Ref<RTreeNodeCore>>
      spares_;                    // new nodes in the order in which they are used, reversed
  Ref<RTreeNodeCore> workspace_;  // a leaf
  RTreeSplitter splitter_;
};

}  // namespace tq::detail
