#pragma once

/// @file TreeTraversal.h
/// Traversal of trees and forests: depth first, post-order and breadth first.
///
///     for (const RTreeNode<Shape>* node : depthFirst(tree)) …
///     std::ranges::find_if(breadthFirst(tree, 3), isWanted)
///     depthFirstPostOrder(subTree(tree, node))

#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/collections/ChildTraversable.h>
#include <TQFoundation/collections/Forest.h>
#include <TQFoundation/collections/detail/StableStack.h>

namespace tq {

/// The order in which nodes are visited. Siblings are always visited in their own order.
enum class TraversalOrder {
  depthFirst,           ///< a node, then everything below it
  depthFirstPostOrder,  ///< everything below a node, then the node
  breadthFirst,         ///< level by level from the root
};

/// All levels are visited.
inline constexpr std::size_t kNoDepthLimit = std::numeric_limits<std::size_t>::max();

namespace detail {

/// The state of a depth-first traversal: the path from the root to the current node. Each node
/// above the current one has its children, and which of them is on the path.
template <class Tree, TraversalOrder order>
class DepthFirstWalk {
 public:
  explicit DepthFirstWalk(std::size_t depthLimit) noexcept : depthLimit_(depthLimit) {}

  [[nodiscard]] bool isAtEnd() const noexcept { return path_.size() == 0; }
  [[nodiscard]] TreeNode<Tree> node() const { return path_.top().node.get(); }
  [[nodiscard]] std::size_t depth() const noexcept { return path_.size() - 1; }

  void start(const Tree& tree) {
    path_.push(rootOf(tree));
    if constexpr (kPostOrder) goDown(tree);
  }

  // Children are requested as late as possible, so a traversal that stops early does not pay for
  // the rest.
  void advance(const Tree& tree) {
    if constexpr (kPostOrder) {
      path_.pop();
      if (!isAtEnd() && goToNextChild()) goDown(tree);
    } else {
      if (goToFirstChild(tree)) return;
      do {
        path_.pop();
      } while (!isAtEnd() && !goToNextChild());
    }
  }

 private:
  using Children = std::views::all_t<ChildrenOf<Tree>>;
  static constexpr bool kPostOrder = order == TraversalOrder::depthFirstPostOrder;

  struct Below {
    explicit Below(Children&& given)
        : children(std::move(given)),
          next(std::ranges::begin(children)),
          end(std::ranges::end(children)) {}
    Children children;
    std::ranges::iterator_t<Children> next;
    std::ranges::sentinel_t<Children> end;
  };

  /// The view of the children may refer to the node, so both have stable addresses.
  struct Level {
    explicit Level(TreeNode<Tree> current) : node(std::forward<TreeNode<Tree>>(current)) {}
    KeptNode<TreeNode<Tree>> node;
    std::optional<Below> below;
  };

  bool goToFirstChild(const Tree& tree) {
    if (depth() >= depthLimit_) return false;
    Level& parent = path_.top();
    parent.below.emplace(std::views::all(childrenOf(tree, parent.node.get())));
    if (parent.below->next == parent.below->end) return false;
    path_.push(*parent.below->next);
    return true;
  }

  void goDown(const Tree& tree) {
    while (goToFirstChild(tree)) {
    }
  }

  bool goToNextChild() {
    Below& below = *path_.top().below;
    if (++below.next == below.end) return false;
    path_.push(*below.next);
    return true;
  }

  StableStack<Level> path_;
  std::size_t depthLimit_;
};

/// The state of a breadth-first traversal: the current level, and the known part of the next one.
template <class Tree>
class BreadthFirstWalk {
 public:
  explicit BreadthFirstWalk(std::size_t depthLimit) noexcept : depthLimit_(depthLimit) {}

  [[nodiscard]] bool isAtEnd() const noexcept { return position_ == level_.size(); }
  [[nodiscard]] TreeNode<Tree> node() const { return level_[position_].get(); }
  [[nodiscard]] std::size_t depth() const noexcept { return depth_; }

  void start(const Tree& tree) {
    level_.clear();
    level_.emplace_back(rootOf(tree));
    position_ = 0;
    depth_ = 0;
  }

  void advance(const Tree& tree) {
    if (depth_ < depthLimit_) {
      for (auto&& child : childrenOf(tree, level_[position_].get())) {
        below_.emplace_back(std::forward<decltype(child)>(child));
      }
    }
    if (++position_ != level_.size()) return;
    level_.swap(below_);
    below_.clear();
    position_ = 0;
    ++depth_;
  }

 private:
  std::vector<KeptNode<TreeNode<Tree>>> level_;
  std::vector<KeptNode<TreeNode<Tree>>> below_;
  std::size_t position_ = 0;
  std::size_t depth_ = 0;
  std::size_t depthLimit_;
};

template <class Tree, TraversalOrder order>
struct WalkOf {
  using Type = DepthFirstWalk<Tree, order>;
};
template <class Tree>
struct WalkOf<Tree, TraversalOrder::breadthFirst> {
  using Type = BreadthFirstWalk<Tree>;
};

}  // namespace detail

/// A view of the nodes of a tree, or of the trees of a forest one after another. Cheap to copy; may
/// be iterated any number of times. It refers to a tree that was passed as an lvalue, and owns one
/// that was passed as a temporary. The tree must not change during an iteration.
///
/// Memory:  depth first, one frame for each level above the current node; breadth first, one node
///          handle for each node of two levels. Never recursive, for trees of any depth.
/// Cost:    the children of each node are requested at most once: in post-order before the node is
///          visited, otherwise when the traversal moves past it.
template <ChildTraversable Tree, TraversalOrder order>
class TreeTraversal : public std::ranges::view_interface<TreeTraversal<Tree, order>> {
 public:
  /// A single-pass iterator. Valid while the view and its trees do not change.
  class Iterator {
   public:
    using iterator_concept = std::input_iterator_tag;
    using value_type = std::remove_cvref_t<TreeNode<Tree>>;
    using difference_type = std::ptrdiff_t;

    /// Starts at the root of the first tree, or at the end if there is no tree.
    Iterator(std::span<const Tree> trees, std::size_t depthLimit)
        : trees_(trees), walk_(depthLimit) {
      if (!trees_.empty()) walk_.start(trees_.front());
    }

    [[nodiscard]] TreeNode<Tree> operator*() const { return walk_.node(); }

    Iterator& operator++() {
      walk_.advance(trees_.front());
      if (walk_.isAtEnd()) {
        trees_ = trees_.subspan(1);
        if (!trees_.empty()) walk_.start(trees_.front());
      }
      return *this;
    }
    void operator++(int) { ++*this; }

    /// Returns the depth of the current node; 0 at the root.
    [[nodiscard]] std::size_t depth() const noexcept { return walk_.depth(); }

    friend bool operator==(const Iterator& iterator, std::default_sentinel_t) noexcept {
      return iterator.trees_.empty();
    }

   private:
    std::span<const Tree> trees_;
    typename detail::WalkOf<Tree, order>::Type walk_;
  };

  /// A view of `trees`, one after another. `owner` keeps them alive; null if the caller does.
  TreeTraversal(std::shared_ptr<const void> owner, std::span<const Tree> trees,
                std::size_t depthLimit) noexcept
      : owner_(std::move(owner)), trees_(trees), depthLimit_(depthLimit) {}

  [[nodiscard]] Iterator begin() const { return Iterator(trees_, depthLimit_); }
  [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

 private:
  std::shared_ptr<const void> owner_;  // null if the caller owns the trees
  std::span<const Tree> trees_;
  std::size_t depthLimit_;
};

/// Returns a view of the nodes of `tree` in the given order.
/// @param tree        a tree or a Forest. The view owns it if it is a temporary.
/// @param depthLimit  how many levels below the root are visited; 0 visits only the root
template <TraversalOrder order, class Argument>
[[nodiscard]] auto traverse(Argument&& tree, std::size_t depthLimit = kNoDepthLimit) {
  using Given = std::remove_cvref_t<Argument>;
  const auto view = [depthLimit](const Given& given, std::shared_ptr<const void> owner) {
    if constexpr (detail::kIsForest<Given>) {
      using Tree = typename Given::Tree;
      return TreeTraversal<Tree, order>(std::move(owner), given.trees(), depthLimit);
    } else {
      return TreeTraversal<Given, order>(std::move(owner), {&given, 1}, depthLimit);
    }
  };
  if constexpr (std::is_lvalue_reference_v<Argument>) {
    return view(tree, nullptr);
  } else {
    auto owned = std::make_shared<const Given>(std::forward<Argument>(tree));
    return view(*owned, owned);
  }
}

/// traverse() in the order depthFirst.
template <class Argument>
[[nodiscard]] auto depthFirst(Argument&& tree, std::size_t depthLimit = kNoDepthLimit) {
  return traverse<TraversalOrder::depthFirst>(std::forward<Argument>(tree), depthLimit);
}

/// traverse() in the order depthFirstPostOrder.
template <class Argument>
[[nodiscard]] auto depthFirstPostOrder(Argument&& tree, std::size_t depthLimit = kNoDepthLimit) {
  return traverse<TraversalOrder::depthFirstPostOrder>(std::forward<Argument>(tree), depthLimit);
}

/// traverse() in the order breadthFirst. The trees of a forest are visited one after another, each
/// level by level.
template <class Argument>
[[nodiscard]] auto breadthFirst(Argument&& tree, std::size_t depthLimit = kNoDepthLimit) {
  return traverse<TraversalOrder::breadthFirst>(std::forward<Argument>(tree), depthLimit);
}

}  // namespace tq
