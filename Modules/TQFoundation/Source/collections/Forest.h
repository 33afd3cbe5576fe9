#pragma once

/// @file Forest.h
/// An ordered list of trees of one type.

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/collections/ChildTraversable.h>

namespace tq {

/// Holds its trees by value, and so shares them when `TreeType` is a Ref. The functions of
/// TreeTraversal.h go over the nodes of all of them.
template <ChildTraversable TreeType>
class Forest {
 public:
  /// The type of its trees.
  using Tree = TreeType;

  Forest() noexcept = default;
  /// Takes the trees over, in this order.
  explicit Forest(std::vector<Tree> trees) noexcept : trees_(std::move(trees)) {}

  /// The trees in order, lent until the forest changes.
  [[nodiscard]] std::span<const Tree> trees() const noexcept { return trees_; }
  [[nodiscard]] std::size_t count() const noexcept { return trees_.size(); }
  /// Adds a tree behind the others.
  void append(Tree tree) { trees_.push_back(std::move(tree)); }

 private:
  std::vector<Tree> trees_;
};

namespace detail {

template <class T>
inline constexpr bool kIsForest = false;
template <class Tree>
inline constexpr bool kIsForest<Forest<Tree>> = true;

}  // namespace detail
}  // namespace tq
