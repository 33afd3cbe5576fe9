#pragma once

/// @file RTreeSearch.h
/// Finds the elements of an R-tree in a rect.

#include <concepts>
#include <cstddef>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/spatial/RTree.h>

namespace tq {

/// Calls `visit(entry)` for each entry whose rect intersects `rect`, as RTree::intersects() defines
/// it, in no particular order. An entry is an RTreeLeafEntry.
///
/// Threads: as for queries. `visit` may query and release the tree, but must not insert into it.
///          Its exceptions propagate.
/// Cost:    the nodes with entries in the rect, and their children. Does not use the index of
///          RTree::intersects().
template <class Element, std::invocable<const RTreeLeafEntry<Element>&> Visit>
void visitEntriesIntersecting(const RTree<Element>& tree, const Rect& rect, Visit visit) {
  const auto held = share(tree);  // `visit` may release it
  std::vector<const RTreeNode<Element>*> pending{tree.root()};
  while (!pending.empty()) {
    const RTreeNode<Element>* const node = pending.back();
    pending.pop_back();
    for (std::size_t i = 0; i < node->count(); ++i) {
      if (!RectIntersectsRect(node->rects()[i], rect)) continue;
      if (node->isLeaf()) {
        visit(node->leafEntries()[static_cast<std::ptrdiff_t>(i)]);
      } else {
        pending.push_back(node->child(i));
      }
    }
  }
}

/// Returns copies of the elements whose rects intersect `rect`, in no particular order.
template <std::copyable Element>
[[nodiscard]] std::vector<Element> elementsIntersecting(const RTree<Element>& tree,
                                                        const Rect& rect) {
  std::vector<Element> found;
  visitEntriesIntersecting(
      tree, rect, [&](const RTreeLeafEntry<Element>& entry) { found.push_back(entry.element); });
  return found;
}

}  // namespace tq
