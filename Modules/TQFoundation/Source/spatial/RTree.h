#pragma once

/// @file RTree.h
/// A spatial index: which of many rects lie where.

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

/// Elements stored under their bounding rects, for telling fast whether anything lies in a place.
/// Made by makeRef<RTree<Element>>(maxNumberOfChildren) and shared by reference. It only grows.
///
/// Element:  any type that can be moved; nothing else is asked of it. Elements are never compared.
/// Rects:    kept exactly as given. Null rects are stored and never met; a rect with NaN or an
///           origin of -infinity is stored, never met, and may hide rects stored beside it. Areas
///           are width times height as they stand, so negative extents take part in the choice of a
///           place as negative areas.
/// Edges:    rects are closed. The rects of directories are kept as origin and extent, whose sum
///           may fall short of an edge by one unit in the last place: a query that does no more
///           than touch exactly that edge may miss it.
/// Threads:  none of its own locking. Queries may run side by side, an insertion runs alone.
/// Nodes:    a tree is a range of its nodes (not of its elements), depth first, the root first.
template <class Element>
class RTree final : public Object {
 public:
  /// The type of its nodes.
  using Node = RTreeNode<Element>;

  /// @param maxNumberOfChildren  most entries of a node, at least 2. Up to 127, memory for a full
  ///                             node is taken at once; 8 to 32 suit most uses.
  explicit RTree(std::int64_t maxNumberOfChildren)
      : core_(emptyRoot(maxNumberOfChildren), maxNumberOfChildren) {}

  /// As given when it was made.
  [[nodiscard]] std::int64_t maxNumberOfChildren() const noexcept { return core_.capacity(); }

  /// Half of the maximum, for information: nodes may well hold less.
  [[nodiscard]] std::int64_t minNumberOfChildren() const noexcept { return core_.capacity() / 2; }

  /// The top node; another one after an insertion that made the tree higher.
  [[nodiscard]] const Node* root() const noexcept { return static_cast<Node*>(&core_.root()); }

  /// Stores `element` under `boundingRect`.
  /// @throws std::bad_alloc, and what moving the element throws; the tree is as it was then
  void insert(Element element, const Rect& boundingRect,
              RTreeSplitStrategy splitStrategy = RTreeSplitStrategy::quadratic) {
    static_cast<void>(splitStrategy);  // there is one
    detail::RTreeElement<Element> kept(std::move(element));
    core_.insert(boundingRect, &kept);
  }

  /// Stores `element` under the rect of size 0 at `point`.
  void insert(Element element, Point point,
              RTreeSplitStrategy splitStrategy = RTreeSplitStrategy::quadratic) {
    insert(std::move(element), Rect(point, Size()), splitStrategy);
  }

  /// True when at least one stored rect intersects `rect`, as RectIntersectsRect() tells it; rects
  /// that only touch do. Never for a null rect. No memory is taken in trees of up to 64 levels.
  [[nodiscard]] bool intersects(const Rect& rect) const { return core_.intersects(rect); }

  /// Whether no node holds more than the maximum and the rect of each directory entry equals the
  /// bounding rect of its child. Holds after every insertion of rects without NaN, which equals
  /// nothing, and without an origin of -infinity, from which no extent reaches back. O(n).
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

  /// The children of one of this tree's nodes, in entry order; lent until the next insertion.
  /// Memory is told to fetch them, for whoever asks will look at them next.
  [[nodiscard]] typename Node::Children children(const Node* node) const noexcept {
    for (const auto* child : node->childArray()) __builtin_prefetch(child);
    return node->children();
  }

  [[nodiscard]] auto begin() const { return depthFirst(*this).begin(); }
  [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

 private:
  static Ref<Node> emptyRoot(std::int64_t maxNumberOfChildren) {
    TQ_ASSERT(maxNumberOfChildren >= 2);
    return Node::make(Node::Kind::leaf, maxNumberOfChildren);
  }

  detail::RTreeCore core_;
};

}  // namespace tq
