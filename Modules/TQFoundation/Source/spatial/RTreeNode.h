#pragma once

/// @file RTreeNode.h
/// The nodes of an R-tree and what they hold.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ranges>
#include <span>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/spatial/detail/RTreeNodeCore.h>

namespace tq {

template <class Element>
class RTree;

template <class Element>
class RTreeNode;

/// An entry of a directory: a child, and the rect that bounds it.
template <class Element>
struct RTreeDirectoryEntry {
  Rect rect = RectNull;           ///< what the child's entries lie in
  Ref<RTreeNode<Element>> child;  ///< never none
};

/// An entry of a leaf: an element, lent by its node, and the rect that it was inserted under.
template <class Element>
struct RTreeLeafEntry {
  Rect rect;               ///< as given to the insertion
  const Element& element;  ///< lent by the node until the next insertion
};

namespace detail {

/// An element as a leaf keeps it. One whose move may throw is kept in a box of its own, so that a
/// split cannot fail halfway.
template <class Element>
class RTreeElement {
 public:
  explicit RTreeElement(Element&& element) : kept_(keep(std::move(element))) {}

  [[nodiscard]] const Element& get() const noexcept {
    if constexpr (kInPlace) {
      return kept_;
    } else {
      return *kept_;
    }
  }

 private:
  static constexpr bool kInPlace =
      std::is_nothrow_move_constructible_v<Element> && std::is_nothrow_destructible_v<Element>;
  using Kept = std::conditional_t<kInPlace, Element, std::unique_ptr<Element>>;

  static Kept keep(Element&& element) {
    if constexpr (kInPlace) {
      return std::move(element);
    } else {
      return std::make_unique<Element>(std::move(element));
    }
  }

  Kept kept_;
};

}  // namespace detail

/// A node: a leaf that holds elements or a directory that holds further nodes. Shared by reference;
/// two nodes are equal when they are the same one. Only the tree changes its nodes, and a node
/// keeps its identity and its kind when it is split. What is lent below is good until the next
/// insertion.
///
/// Threads: as the tree's.
template <class Element>
class RTreeNode final : public detail::RTreeNodeCore {
 public:
  /// Makes a leaf's entry at an index.
  struct LeafEntryAt {
    const RTreeNode* node;  ///< whose entries these are
    /// The entry; its element is lent.
    [[nodiscard]] RTreeLeafEntry<Element> operator()(std::uint32_t index) const noexcept {
      return {node->rects()[index], node->elements_[index].get()};
    }
  };
  /// Makes a directory's entry at an index.
  struct DirectoryEntryAt {
    const RTreeNode* node;  ///< whose entries these are
    /// The entry; it holds the child.
    [[nodiscard]] RTreeDirectoryEntry<Element> operator()(std::uint32_t index) const noexcept {
      return {node->rects()[index], Ref<RTreeNode>(childOf(node->childArray()[index]))};
    }
  };
  /// Makes a child of what a directory keeps.
  struct ChildOf {
    /// The child, lent.
    [[nodiscard]] const RTreeNode* operator()(detail::RTreeNodeCore* child) const noexcept {
      return childOf(child);
    }
  };

  /// Indices of entries.
  using Positions = std::ranges::iota_view<std::uint32_t, std::uint32_t>;

  /// Random-access ranges over the entries, in entry order: each makes its entries on the fly.
  using Leaf = std::ranges::transform_view<Positions, LeafEntryAt>;
  using Directory = std::ranges::transform_view<Positions, DirectoryEntryAt>;
  using Children = std::ranges::transform_view<std::span<RTreeNodeCore* const>, ChildOf>;

  /// What a node holds: the entries of a leaf, or those of a directory.
  using Storage = std::variant<Leaf, Directory>;

  /// The entries, by what the node is.
  [[nodiscard]] Storage storage() const noexcept {
    if (isLeaf()) return Storage(std::in_place_index<0>, leafEntries());
    return Storage(std::in_place_index<1>, directoryEntries());
  }

  /// The elements of a leaf with their rects; none in a directory.
  [[nodiscard]] Leaf leafEntries() const noexcept {
    return Leaf(positions(isLeaf()), LeafEntryAt{this});
  }

  /// The children of a directory with their rects; none in a leaf.
  [[nodiscard]] Directory directoryEntries() const noexcept {
    return Directory(positions(!isLeaf()), DirectoryEntryAt{this});
  }

  /// The nodes below a directory in entry order, lent; none below a leaf.
  [[nodiscard]] Children children() const noexcept { return Children(childArray(), ChildOf{}); }

  /// The child at a position below count() of a directory, lent.
  [[nodiscard]] const RTreeNode* child(std::size_t index) const noexcept {
    return childOf(childArray()[index]);
  }

  /// Number of entries.
  [[nodiscard]] std::size_t count() const noexcept { return entryCount(); }

  // isLeaf(), rects() and boundingRect() are inherited.

 private:
  friend class RTree<Element>;
  using Kind = detail::RTreeNodeCore::Kind;

  [[nodiscard]] Positions positions(bool any) const noexcept {
    return {0, any ? static_cast<std::uint32_t>(count()) : 0};
  }

  RTreeNode(Kind kind, std::int64_t capacity) : RTreeNodeCore(kind, capacity) {}

  [[nodiscard]] static Ref<RTreeNode> make(Kind kind, std::int64_t capacity) {
    static_assert(sizeof(RTreeNode) == kHeaderBytes);
    return Ref<RTreeNode>::adopt(new (Trailing{trailingBytes(kind, capacity)})
                                     RTreeNode(kind, capacity));
  }

  [[nodiscard]] static RTreeNode* childOf(RTreeNodeCore* child) noexcept {
    return static_cast<RTreeNode*>(child);
  }

  [[nodiscard]] Ref<RTreeNodeCore> makeNode(Kind kind, std::int64_t capacity) const override {
    return make(kind, capacity);
  }

  void reserveElements(std::size_t count) override {
    if (count > elements_.capacity()) {
      elements_.reserve(std::max(count, 2 * elements_.capacity()));
    }
  }

  void appendElement(void* element) noexcept override {
    elements_.push_back(std::move(*static_cast<detail::RTreeElement<Element>*>(element)));
  }

  void divideElements(std::span<const std::uint32_t> order, std::size_t kept, RTreeNodeCore& spare,
                      RTreeNodeCore& sibling) noexcept override {
    Elements& first = static_cast<RTreeNode&>(spare).elements_;
    Elements& second = static_cast<RTreeNode&>(sibling).elements_;
    for (const std::uint32_t index : order.first(kept)) {
      first.push_back(std::move(elements_[index]));
    }
    for (const std::uint32_t index : order.subspan(kept)) {
      second.push_back(std::move(elements_[index]));
    }
    elements_.swap(first);
    first.clear();
  }

  using Elements = std::vector<detail::RTreeElement<Element>>;
  Elements elements_;
};

}  // namespace tq
