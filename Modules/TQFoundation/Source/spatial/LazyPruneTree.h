#pragma once

/// @file LazyPruneTree.h
/// A tree seen without the nodes that fail a test, and without everything below them.

#include <concepts>
#include <ranges>
#include <utility>
#include <vector>

#include <TQFoundation/collections/ChildTraversable.h>
#include <TQFoundation/collections/Forest.h>
#include <TQFoundation/spatial/detail/Filtered.h>

namespace tq {

/// A view of `Base` that leaves out each node for which `predicate(node)` is false, together with
/// its whole subtree. The root always stays: the predicate never sees it. Nothing is copied or
/// remembered; the predicate runs each time a range of children is walked, once for each child.
///
/// Holds the base tree by value, and so shares it when `Base` is a Ref. The ranges of children
/// refer to this view's predicate: they are good while the view stays where it is.
template <ChildTraversable Base, class Predicate>
requires std::predicate<const Predicate&, TreeNodeArgument<Base>>
class LazyPruneTree {
 public:
  /// A view of `base` without what `predicate` is false for.
  LazyPruneTree(Base base, Predicate predicate)
      : base_(std::move(base)), predicate_(std::move(predicate)) {}

  /// As given.
  [[nodiscard]] const Base& base() const noexcept { return base_; }
  [[nodiscard]] const Predicate& predicate() const noexcept { return predicate_; }

  /// The base tree's, never left out.
  [[nodiscard]] TreeNode<Base> root() const { return rootOf(base_); }

  /// The children that pass, in the base tree's order.
  [[nodiscard]] auto children(TreeNodeArgument<Base> node) const {
    return detail::Filtered(std::views::all(childrenOf(base_, node)), predicate_);
  }

 private:
  Base base_;
  Predicate predicate_;
};

/// A view of `tree`, which it takes over.
template <ChildTraversable Tree, class Predicate>
[[nodiscard]] LazyPruneTree<Tree, Predicate> prune(Tree tree, Predicate predicate) {
  return {std::move(tree), std::move(predicate)};
}

/// Every tree of the forest, pruned with the same predicate.
template <ChildTraversable Tree, class Predicate>
[[nodiscard]] Forest<LazyPruneTree<Tree, Predicate>> prune(const Forest<Tree>& forest,
                                                           Predicate predicate) {
  std::vector<LazyPruneTree<Tree, Predicate>> trees;
  trees.reserve(forest.count());
  for (const Tree& tree : forest.trees()) trees.emplace_back(tree, predicate);
  return Forest<LazyPruneTree<Tree, Predicate>>(std::move(trees));
}

}  // namespace tq
