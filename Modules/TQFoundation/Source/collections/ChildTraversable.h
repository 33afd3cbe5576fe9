#pragma once

/// @file ChildTraversable.h
/// What makes a type a tree: a root, and the children of any node.

#include <concepts>
#include <memory>
#include <ranges>
#include <type_traits>
#include <utility>

#include <TQFoundation/objects/Ref.h>

namespace tq {

namespace detail {

/// A Ref to a tree stands for the tree itself.
template <class Tree>
[[nodiscard]] const Tree& treeBehind(const Tree& tree) noexcept {
  return tree;
}
template <class Tree>
[[nodiscard]] const Tree& treeBehind(const Ref<Tree>& tree) noexcept {
  return *tree;
}

template <class Tree>
using RootOf = decltype(treeBehind(std::declval<const Tree&>()).root());

template <class Tree>
using ChildrenOf =
    decltype(treeBehind(std::declval<const Tree&>())
                 .children(std::declval<const std::remove_reference_t<RootOf<Tree>>&>()));

template <class Root>
inline constexpr bool kLendsNodes = std::is_lvalue_reference_v<Root>;

/// A node that is kept for later: by its address when the tree lends it, else by its value.
template <class Root>
class KeptNode {
 public:
  explicit KeptNode(Root node) : node_(std::move(node)) {}
  [[nodiscard]] const Root& get() const noexcept { return node_; }

 private:
  Root node_;
};

template <class Root>
class KeptNode<Root&> {
 public:
  explicit KeptNode(Root& node) noexcept : node_(&node) {}
  [[nodiscard]] Root& get() const noexcept { return *node_; }

 private:
  Root* node_;
};

}  // namespace detail

/// A tree type, or a Ref to one, that offers
///
///     root()           the node at the top
///     children(node)   an input range of the nodes directly below `node`, in order
///
/// Nodes are either small values that are copied (pointers, references, indices), or lvalues that
/// the tree lends and that stay where they are; then root() and the range of children both give
/// lvalue references. The range may be a container, a reference to one, or a view that computes
/// the children while it is walked.
template <class Tree>
concept ChildTraversable = requires {
  typename detail::RootOf<Tree>;
  typename detail::ChildrenOf<Tree>;
}
&&std::ranges::input_range<detail::ChildrenOf<Tree>>&&
        std::ranges::viewable_range<detail::ChildrenOf<Tree>>&& std::convertible_to<
            std::ranges::range_reference_t<detail::ChildrenOf<Tree>>, detail::RootOf<Tree>> &&
    (!detail::kLendsNodes<detail::RootOf<Tree>> ||
     std::is_lvalue_reference_v<std::ranges::range_reference_t<detail::ChildrenOf<Tree>>>);

/// What root() gives and a traversal yields: a node by value, or a reference to one that is lent.
template <ChildTraversable Tree>
using TreeNode = detail::RootOf<Tree>;

/// A node as an argument.
template <ChildTraversable Tree>
using TreeNodeArgument = const std::remove_reference_t<TreeNode<Tree>>&;

/// The tree's root: itself for a tree held by value, of the tree behind a reference else. O(1).
[[nodiscard]] decltype(auto) rootOf(const ChildTraversable auto& tree) {
  return detail::treeBehind(tree).root();
}

/// The children of `node`, in order.
template <ChildTraversable Tree>
[[nodiscard]] decltype(auto) childrenOf(const Tree& tree, TreeNodeArgument<Tree> node) {
  return detail::treeBehind(tree).children(node);
}

/// A tree's nodes from any of them on: the same tree with another root. Holds the tree by value,
/// and so shares it when `Base` is a Ref.
template <ChildTraversable Base>
class SubTree {
 public:
  /// `root` must be a node of `base`, which is not checked.
  SubTree(Base base, TreeNode<Base> root) : base_(std::move(base)), root_(root) {}

  /// The tree that it is a part of.
  [[nodiscard]] const Base& base() const noexcept { return base_; }
  /// The node that it starts at.
  [[nodiscard]] TreeNode<Base> root() const { return root_.get(); }
  /// The children that the whole tree gives the node.
  [[nodiscard]] decltype(auto) children(TreeNodeArgument<Base> node) const {
    return childrenOf(base_, node);
  }

 private:
  Base base_;
  detail::KeptNode<TreeNode<Base>> root_;
};

/// The part of `tree` from `node` down.
template <ChildTraversable Tree>
[[nodiscard]] SubTree<Tree> subTree(Tree tree, TreeNode<Tree> node) {
  return SubTree<Tree>(std::move(tree), node);
}

}  // namespace tq
