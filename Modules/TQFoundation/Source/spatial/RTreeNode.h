#pragma once

/// @file RTreeNode.h
/// The nodes of an R-tree and their entries.

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

/// An entry of a directory: a child and its bounding rect.
template <class Element>
struct RTreeDirectoryEntry {
  Rect rect = RectNull;           ///< contains the rects of the child's entries
  Ref<RTreeNode<Element>> child;  ///< never null
};

/// An entry of a leaf: an element, owned by its node, and the rect that it was inserted with.
template <class Element>
struct RTreeLeafEntry {
  Rect rect;               ///< as passed to the insertion
  const Element& element;  ///< valid until the next insertion
};

namespace detail {

/// An element in a leaf. If moving it may throw, it is stored in a heap block of its own, so that a
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

/// A node of an R-tree: a leaf, which holds elements, or a directory, which holds child nodes.
/// Nodes are shared by reference; two nodes are equal if they are the same object. Only the tree
/// changes its nodes. A node keeps its identity and its kind when it is split. Pointers, references
/// and ranges that the functions below return are valid until the next insertion.
///
/// Threads: as for the tree.
template <class Element>
class RTreeNode final : public detail::RTreeNodeCore {
 public:
  /// Returns the entry of a leaf at an index.
  struct LeafEntryAt {
    const RTreeNode* node;  ///< whose entries these are
    /// Returns the entry. The node owns its element.
    [[nodiscard]] RTreeLeafEntry<Element> operator()(std::uint32_t index) const noexcept {
      return {node->rects()[index], node->elements_[index].get()};
    }
  };
  /// Returns the entry of a directory at an index.
  struct DirectoryEntryAt {
    const RTreeNode* node;  ///< whose entries these are
    /// Returns the entry. It shares the ownership of the child.
    [[nodiscard]] RTreeDirectoryEntry<Element> operator()(std::uint32_t index) const noexcept {
      return {node->rects()[index], Ref<RTreeNode>(childOf(node->childArray()[index]))};
    }
  };
  /// Converts the stored child pointers of a directory.
  struct ChildOf {
    /// Returns the child. The directory owns it.
    [[nodiscard]] const RTreeNode* operator()(detail::RTreeNodeCore* child) const noexcept {
      return childOf(child);
    }
  };

  /// The indices of the entries.
  using Positions = std::ranges::iota_view<std::uint32_t, std::uint32_t>;

  /// Random-access ranges over the entries, in entry order. They create each entry when it is read.
  using Leaf = std::ranges::transform_view<Positions, LeafEntryAt>;
  using Directory = std::ranges::transform_view<Positions, DirectoryEntryAt>;
  using Children = std::ranges::transform_view<std::span<RTreeNodeCore* const>, ChildOf>;

  /// The entries of a leaf or those of a directory.
  using Storage = std::variant<Leaf, Directory>;

  /// Returns the entries, according to the kind of the node.
  [[nodiscard]] Storage storage() const noexcept {
    if (isLeaf()) return Storage(std::in_place_index<0>, leafEntries());
    return Storage(std::in_place_index<1>, directoryEntries());
  }

  /// Returns the elements of a leaf with their rects. Empty for a directory.
  [[nodiscard]] Leaf leafEntries() const noexcept {
    return Leaf(positions(isLeaf()), LeafEntryAt{this});
  }

  /// Returns the children of a directory with their rects. Empty for a leaf.
  [[nodiscard]] Directory directoryEntries() const noexcept {
    return Directory(positions(!isLeaf()), DirectoryEntryAt{this});
  }

  /// Returns the child nodes of a directory in entry order. Empty for a leaf.
  [[nodiscard]] Children children() const noexcept { return Children(childArray(), ChildOf{}); }

  /// Returns the child of a directory at `index`, which must be below count().
  [[nodiscard]] const RTreeNode* child(std::size_t index) const noexcept {
    return childOf(childArray()[index]);
  }

  /// The number of entries.
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
