#pragma once

/// @file Forest.h
/// An ordered list of trees of one type.

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/collections/ChildTraversable.h>

namespace tq {

/// A list of trees. Stores its trees by value, and thus shares them if `TreeType` is a Ref. The
/// functions of TreeTraversal.h visit the nodes of all of them.
template <ChildTraversable TreeType>
class Forest {
 public:
  /// The type of its trees.
  using Tree = TreeType;

  Forest() noexcept = default;
  /// A forest of these trees, in this order.
  explicit Forest(std::vector<Tree> trees) noexcept : trees_(std::move(trees)) {}

  /// Returns the trees in order. The span is valid until the forest changes.
  [[nodiscard]] std::span<const Tree> trees() const noexcept { return trees_; }
  [[nodiscard]] std::size_t count() const noexcept { return trees_.size(); }
  /// Adds a tree at the end.
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
