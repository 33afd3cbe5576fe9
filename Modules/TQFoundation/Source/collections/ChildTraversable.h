#pragma once

/// @file ChildTraversable.h
/// The concept of a tree: a root, and the children of each node.

#include <concepts>
#include <memory>
#include <ranges>
#include <type_traits>
#include <utility>

#include <TQFoundation/objects/Ref.h>

namespace tq {

namespace detail {

/// Returns the tree itself, also for a Ref to a tree.
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

/// A stored node: its address if the tree returns references to nodes, otherwise its value.
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

/// A tree type, or a Ref to one, with
///
///     root()           the root node
///     children(node)   an input range of the child nodes of `node`, in order
///
/// Nodes are either small values that are copied (pointers, references, indices), or lvalues that
/// the tree owns and that have stable addresses. In the second case, root() and the range of
/// children both return lvalue references. The range may be a container, a reference to one, or a
/// view that computes the children during the iteration.
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

/// The type of root() and of the elements of a traversal: a node by value or by reference.
template <ChildTraversable Tree>
using TreeNode = detail::RootOf<Tree>;

/// A node as a function argument.
template <ChildTraversable Tree>
using TreeNodeArgument = const std::remove_reference_t<TreeNode<Tree>>&;

/// Returns the root of a tree, or of the tree behind a Ref. O(1).
[[nodiscard]] decltype(auto) rootOf(const ChildTraversable auto& tree) {
  return detail::treeBehind(tree).root();
}

/// Returns the children of `node`, in order.
template <ChildTraversable Tree>
[[nodiscard]] decltype(auto) childrenOf(const Tree& tree, TreeNodeArgument<Tree> node) {
  return detail::treeBehind(tree).children(node);
}

/// The part of a tree below a node: the same tree with another root. Stores the tree by value, and
/// thus shares it if `Base` is a Ref. If the tree is no Ref and returns references to its nodes,
/// the root stays a node of the original tree, which must exist unchanged as long as the part is
/// used.
template <ChildTraversable Base>
class SubTree {
 public:
  /// `root` must be a node of `base`; this is not checked.
  SubTree(Base base, TreeNode<Base> root) : base_(std::move(base)), root_(root) {}

  /// Returns the whole tree.
  [[nodiscard]] const Base& base() const noexcept { return base_; }
  /// Returns the root of the subtree.
  [[nodiscard]] TreeNode<Base> root() const { return root_.get(); }
  /// Returns the children of `node` in the whole tree.
  [[nodiscard]] decltype(auto) children(TreeNodeArgument<Base> node) const {
    return childrenOf(base_, node);
  }

 private:
  Base base_;
  detail::KeptNode<TreeNode<Base>> root_;
};

/// Returns the part of `tree` with `node` as its root.
template <ChildTraversable Tree>
[[nodiscard]] SubTree<Tree> subTree(Tree tree, TreeNode<Tree> node) {
  return SubTree<Tree>(std::move(tree), node);
}

}  // namespace tq
