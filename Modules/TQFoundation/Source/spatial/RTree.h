#pragma once

/// @file RTree.h
/// An R-tree: a spatial index of rects.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/collections/TreeTraversal.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/spatial/RTreeNode.h>
#include <TQFoundation/spatial/RTreeSplitStrategy.h>
#include <TQFoundation/spatial/detail/RTreeCore.h>

namespace tq {

/// A spatial index that stores elements under their bounding rects and quickly tests whether any of
/// them intersects a rect. Create it with makeRef<RTree<Element>>(maxNumberOfChildren). Elements
/// can be added, but not removed.
///
/// Element:  any movable type. Elements are never compared.
/// Rects:    stored unchanged. No query finds a null rect, or one with NaN. The rect of a directory
///           cannot express a minimum of -infinity. So a rect with NaN, or whose minimum x or y
///           after RectStandardize() is -infinity (by its origin, by an extent of -infinity, or by
///           a sum below the range of double), may hide itself and rects stored near it.
///           Areas are width times height of the raw fields, so a rect with one negative extent
///           has a negative area when the position of an entry is chosen.
/// Edges:    rects are closed. The rects of directories are stored as origin and extent. Their sum
///           may be below the true edge by one unit in the last place of the largest coordinate
///           below that directory, so a query that overlaps a rect by less than that may miss it:
///           a rect at -1e19 can hide rects of size 3 near 0.
/// Speed:    intersects() searches the nodes at first. When its calls have taken about as long as
///           building an index of all rects takes, one of them builds it: up to 40 bytes for each
///           element, and a third of the time of the insertions. Later insertions extend it.
///           Results are the same with and without it. With rects near ±1e300, or with infinite or
///           NaN fields, queries that find an element are slow, because the nodes must be searched.
///           With a single very large coordinate, queries that overlap only by its rounding error
///           are slow. RTreeSearch.h, prune() and iteration always visit nodes, without the index.
/// Threads:  no locking. Queries may run in parallel; an insertion must run alone.
/// Nodes:    iterating over a tree visits its nodes (not its elements), depth first, starting with
///           the root.
/// Elements: RTreeSearch.h collects those in a rect.
template <class Element>
class RTree final : public Object {
 public:
  /// The type of the nodes.
  using Node = RTreeNode<Element>;

  /// @param maxNumberOfChildren  the maximum number of entries of a node, at least 2. Up to 127,
  ///                             most nodes have the memory of a full node from the beginning;
  ///                             nodes that a split leaves almost empty have less. 8 to 32 suit
  ///                             most uses. With 2, input that is sorted along a line may
  ///                             add a level with each rect; each operation then visits as
  ///                             many nodes, and memory grows with the square of the number
  ///                             (750 MB for 4000 rects).
  explicit RTree(std::int64_t maxNumberOfChildren)
      : core_((TQ_ASSERT(maxNumberOfChildren >= 2),
               Node::make(Node::Kind::leaf, maxNumberOfChildren,
                          static_cast<std::size_t>(maxNumberOfChildren))),
              maxNumberOfChildren) {}

  /// The argument of the constructor.
  [[nodiscard]] std::int64_t maxNumberOfChildren() const noexcept { return core_.capacity(); }

  /// Half of the maximum. For information only: nodes may have fewer entries.
  [[nodiscard]] std::int64_t minNumberOfChildren() const noexcept { return core_.capacity() / 2; }

  /// The root node. An insertion that makes the tree higher replaces it.
  [[nodiscard]] const Node* root() const noexcept { return static_cast<Node*>(&core_.root()); }

  /// Stores `element` under `boundingRect`.
  /// @throws std::bad_alloc, or what moving the element throws; then the tree is unchanged
  void insert(Element element, const Rect& boundingRect,
              RTreeSplitStrategy splitStrategy = RTreeSplitStrategy::quadratic) {
    static_cast<void>(splitStrategy);  // there is only one
    detail::RTreeElement<Element> kept(std::move(element));
    core_.insert(boundingRect, &kept);
  }

  /// Stores `element` under the rect of size 0 at `point`.
  void insert(Element element, Point point,
              RTreeSplitStrategy splitStrategy = RTreeSplitStrategy::quadratic) {
    insert(std::move(element), Rect(point, Size()), splitStrategy);
  }

  /// Returns whether at least one stored rect intersects `rect`, as defined by
  /// RectIntersectsRect(): rects that only touch do. Always false for a null rect. Needs no
  /// memory in trees of up to 64 levels: without memory for the index the nodes are searched.
  [[nodiscard]] bool intersects(const Rect& rect) const { return core_.intersects(rect); }

  /// Returns whether no node has more entries than the maximum, and the rect of each directory
  /// entry equals the bounding rect of its child. This holds after every insertion of rects without
  /// NaN whose minimum after RectStandardize() is above -infinity. (NaN equals nothing, and no
  /// extent reaches back from -infinity.)
  /// Cost: O(n).
  [[nodiscard]] bool validate() const {
    const auto limit = static_cast<std::uint64_t>(maxNumberOfChildren());
    return std::ranges::all_of(*this, [limit](const Node* node) {
      if (node->count() > limit) return false;
      for (std::size_t i = 0; i < node->children().size(); ++i) {
        if (!RectEqualToRect(node->rects()[i], node->child(i)->boundingRect())) return false;
      }
      return true;
    });
  }

  /// Returns the children of a node of this tree, in entry order. Valid until the next insertion.
  /// Prefetches the children, because the caller is likely to read them next.
  [[nodiscard]] typename Node::Children children(const Node* node) const noexcept {
    for (const auto* child : node->childArray()) __builtin_prefetch(child);
    return node->children();
  }

  [[nodiscard]] auto begin() const { return depthFirst(*this).begin(); }
  [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

 private:
  detail::RTreeCore core_;
};

}  // namespace tq
