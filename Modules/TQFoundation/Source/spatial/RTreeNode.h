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
#include <TQFoundation/spatial/detail/RTreeRange.h>

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

/// An element in a leaf. If moving it may throw, it is stored in a separate heap block, so that a
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
/// changes its nodes. A node keeps its identity and its kind when it is split. Pointers,
/// references, ranges and iterators that the functions below return are valid until the next
/// insertion; iterators also without the range that they came from.
///
/// Threads: as for the tree.
template <class Element>
class RTreeNode final : public detail::RTreeNodeCore {
 public:
  /// Returns the entry of a leaf at an index.
  struct LeafEntryAt {
    const RTreeNode* node = nullptr;  ///< whose entries these are
    /// Returns the entry. The node owns its element.
    [[nodiscard]] RTreeLeafEntry<Element> operator()(std::ptrdiff_t index) const noexcept {
      const auto i = static_cast<std::size_t>(index);
      return {node->rects()[i], node->elements_[i].get()};
    }
  };
  /// Returns the entry of a directory at an index.
  struct DirectoryEntryAt {
    const RTreeNode* node = nullptr;  ///< whose entries these are
    /// Returns the entry. It shares the ownership of the child.
    [[nodiscard]] RTreeDirectoryEntry<Element> operator()(std::ptrdiff_t index) const noexcept {
      const auto i = static_cast<std::size_t>(index);
      return {node->rects()[i], Ref<RTreeNode>(childOf(node->childArray()[i]))};
    }
  };
  /// Converts the stored child pointers of a directory.
  struct ChildAt {
    /// Returns the child. The directory owns it.
    [[nodiscard]] const RTreeNode* operator()(detail::RTreeNodeCore* const* slot) const noexcept {
      return childOf(*slot);
    }
  };

  /// Random-access ranges over the entries, in entry order. They create each entry when it is read.
  using Leaf = detail::RTreeEntries<LeafEntryAt>;
  using Directory = detail::RTreeEntries<DirectoryEntryAt>;
  using ChildIterator = detail::RTreeIterator<detail::RTreeNodeCore* const*, ChildAt>;
  using Children = std::ranges::subrange<ChildIterator>;

  /// The entries of a leaf or those of a directory.
  using Storage = std::variant<Leaf, Directory>;

  /// Returns the entries, according to the kind of the node. The variant belongs to the node, so
  /// `for (const auto entry : std::get<0>(node->storage()))` is safe.
  [[nodiscard]] const Storage& storage() const noexcept { return storage_; }

  /// Returns the elements of a leaf with their rects. Empty for a directory.
  [[nodiscard]] Leaf leafEntries() const noexcept {
    return Leaf(LeafEntryAt{isLeaf() ? this : nullptr});
  }

  /// Returns the children of a directory with their rects. Empty for a leaf.
  [[nodiscard]] Directory directoryEntries() const noexcept {
    return Directory(DirectoryEntryAt{isLeaf() ? nullptr : this});
  }

  /// Returns the child nodes of a directory in entry order. Empty for a leaf.
  [[nodiscard]] Children children() const noexcept {
    const auto all = childArray();
    return {ChildIterator(all.data(), {}), ChildIterator(all.data() + all.size(), {})};
  }

  /// Returns the child of a directory at `index`, which must be below count().
  [[nodiscard]] const RTreeNode* child(std::size_t index) const noexcept {
    return childOf(childArray()[index]);
  }

  /// The number of entries.
  [[nodiscard]] std::size_t count() const noexcept { return entryCount(); }

  // isLeaf(), rects(), boundingRect() and hasEntryIntersecting() are inherited.

 private:
  friend class RTree<Element>;
  using Kind = detail::RTreeNodeCore::Kind;

  RTreeNode(Kind kind, std::size_t inlineSlots) : RTreeNodeCore(kind, inlineSlots) {
    if (isLeaf()) {
      storage_.template emplace<0>(LeafEntryAt{this});
    } else {
      storage_.template emplace<1>(DirectoryEntryAt{this});
    }
  }

  [[nodiscard]] static Ref<RTreeNode> make(Kind kind, std::int64_t capacity, std::size_t entries) {
    static_assert(sizeof(RTreeNode) == kHeaderBytes);
    const std::size_t slots = inlineSlots(capacity, entries);
    return Ref<RTreeNode>::adopt(new (Trailing{trailingBytes(kind, slots, capacity)})
                                     RTreeNode(kind, slots));
  }

  [[nodiscard]] static RTreeNode* childOf(RTreeNodeCore* child) noexcept {
    return static_cast<RTreeNode*>(child);
  }

  [[nodiscard]] Ref<RTreeNodeCore> makeNode(Kind kind, std::int64_t capacity,
                                            std::size_t entries) const override {
    return make(kind, capacity, entries);
  }

  void reserveElements(std::size_t count, std::size_t limit) override {
    if (count > elements_.capacity()) {
      elements_.reserve(std::max(count, std::min(2 * elements_.capacity(), limit)));
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
  Storage storage_;
};

}  // namespace tq
