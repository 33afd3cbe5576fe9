#pragma once

/// @file RTreeCore.h
/// Insertion and search in an R-tree, independent of the element type.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/spatial/detail/RTreeNodeCore.h>
#include <TQFoundation/spatial/detail/RTreeSplitter.h>

namespace tq::detail {

class RTreeIndex;

class TQ_EXPORT RTreeCore {
 public:
  /// @param root  an empty leaf, which also creates all later nodes
  RTreeCore(Ref<RTreeNodeCore> root, std::int64_t capacity);
  ~RTreeCore();
  RTreeCore(const RTreeCore&) = delete;
  RTreeCore& operator=(const RTreeCore&) = delete;

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
  void prepare(RTreeNodeCore& leaf, const Rect& rect);
  [[nodiscard]] bool isFull(const RTreeNodeCore& node) const noexcept;
  /// The maximum number of entries of a node during an insertion.
  [[nodiscard]] std::size_t entryLimit() const noexcept {
    return static_cast<std::size_t>(capacity_) + 1;
  }
  [[nodiscard]] Ref<RTreeNodeCore> splitLeaf(RTreeNodeCore& leaf) noexcept;
  [[nodiscard]] Ref<RTreeNodeCore> splitDirectory(RTreeNodeCore& directory) noexcept;
  void ascend(Rect childRect, Ref<RTreeNodeCore> sibling) noexcept;
  [[nodiscard]] bool searchNodes(const RTreeBounds& bounds, std::uint64_t& work) const;
  [[nodiscard]] bool search(const RTreeBounds& bounds, Frame* frames,
                            std::uint64_t& work) const noexcept;

  void keepIndexed(const Rect& rect) noexcept;
  void addWork(std::uint64_t work, std::size_t unindexed) const noexcept;
  void buildIndex() const noexcept;

  Ref<RTreeNodeCore> root_;
  std::int64_t capacity_;
  std::size_t height_ = 1;
  std::size_t elementCount_ = 0;

  // Queries on several threads create and replace the index; insertions run alone.
  mutable std::atomic<RTreeIndex*> index_ = nullptr;  // owned; null until queries have paid for it
  mutable std::atomic<bool> isBuilding_ = false;
  mutable std::atomic<std::uint64_t> work_ = 0;  // of queries since the index was built
  std::uint64_t workBefore_ = 0;                 // the part of work_ before the last insertion

  // The working memory of an insertion, kept for the next one.
  std::vector<Step> path_;  // from the root to the leaf
  std::vector<Ref<RTreeNodeCore>>
      spares_;                    // new nodes in the order in which they are used, reversed
  Ref<RTreeNodeCore> workspace_;  // a leaf
  RTreeSplitter splitter_;
};

}  // namespace tq::detail
