#pragma once

/// @file LazyPruneTree.h
/// A view of a tree that leaves out subtrees.

#include <concepts>
#include <ranges>
#include <utility>
#include <vector>

#include <TQFoundation/collections/ChildTraversable.h>
#include <TQFoundation/collections/Forest.h>
#include <TQFoundation/spatial/detail/Filtered.h>

namespace tq {

/// A view of `Base` that leaves out each node for which `predicate(node)` is false, together with
/// its whole subtree. The root is never left out; the predicate is not called for it. Nothing is
/// copied or cached: each time a range of children is iterated, the predicate runs once for each
/// child.
///
/// The view stores the base tree by value, so it shares the tree if `Base` is a Ref. The ranges of
/// children refer to this view's predicate. They are valid while the view exists and is not moved.
template <ChildTraversable Base, class Predicate>
requires std::predicate<const Predicate&, TreeNodeArgument<Base>>
class LazyPruneTree {
 public:
  /// A view of `base` without the nodes for which `predicate` is false.
  LazyPruneTree(Base base, Predicate predicate)
      : base_(std::move(base)), predicate_(std::move(predicate)) {}

  /// The arguments of the constructor.
  [[nodiscard]] const Base& base() const noexcept { return base_; }
  [[nodiscard]] const Predicate& predicate() const noexcept { return predicate_; }

  /// The root of the base tree; it is never left out.
  [[nodiscard]] TreeNode<Base> root() const { return rootOf(base_); }

  /// The children for which the predicate is true, in the base tree's order.
  [[nodiscard]] auto children(TreeNodeArgument<Base> node) const {
    return detail::Filtered(std::views::all(childrenOf(base_, node)), predicate_);
  }

 private:
  Base base_;
  Predicate predicate_;
};

/// Returns a view of `tree`, which is moved into the view.
template <ChildTraversable Tree, class Predicate>
[[nodiscard]] LazyPruneTree<Tree, Predicate> prune(Tree tree, Predicate predicate) {
  return {std::move(tree), std::move(predicate)};
}

/// Returns the forest of all trees, pruned with the same predicate.
template <ChildTraversable Tree, class Predicate>
[[nodiscard]] Forest<LazyPruneTree<Tree, Predicate>> prune(const Forest<Tree>& forest,
                                                           Predicate predicate) {
  std::vector<LazyPruneTree<Tree, Predicate>> trees;
  trees.reserve(forest.count());
  for (const Tree& tree : forest.trees()) trees.emplace_back(tree, predicate);
  return Forest<LazyPruneTree<Tree, Predicate>>(std::move(trees));
}

}  // namespace tq
