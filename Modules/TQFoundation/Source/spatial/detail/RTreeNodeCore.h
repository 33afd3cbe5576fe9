#pragma once

/// @file RTreeNodeCore.h
/// The part of an R-tree node that is independent of the element type.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>

namespace tq::detail {

/// The bounds of a standardised rect. A null rect has bounds that intersect no others: minima of
/// +infinity, maxima of -infinity.
struct RTreeBounds {
  double minX = 0;
  double minY = 0;
  double maxX = 0;
  double maxY = 0;

  [[nodiscard]] static constexpr RTreeBounds of(const Rect& rect) noexcept {
    constexpr double inf = std::numeric_limits<double>::infinity();
    if (RectIsNull(rect)) return {inf, inf, -inf, -inf};
    const Rect standard = RectStandardize(rect);
    return {standard.origin.x, standard.origin.y, standard.origin.x + standard.size.width,
            standard.origin.y + standard.size.height};
  }
};

/// The bounds of two entries side by side; together one cache line.
struct RTreeBoundsPair {
  double minX[2];
  double minY[2];
  double maxX[2];
  double maxY[2];
};

/// The entries of a node: their rects, unchanged, their bounds, and in a directory the children.
/// The derived class stores the elements of a leaf; the tree moves them through the virtual
/// functions at the end.
class TQ_EXPORT RTreeNodeCore : public Object {
 public:
  enum class Kind : std::uint8_t { leaf, directory };

  ~RTreeNodeCore() override;

  [[nodiscard]] Kind nodeKind() const noexcept { return static_cast<Kind>(headerDetail()); }
  [[nodiscard]] bool isLeaf() const noexcept { return nodeKind() == Kind::leaf; }
  [[nodiscard]] std::size_t entryCount() const noexcept { return count_; }

  /// The rects of the entries, unchanged, in entry order.
  [[nodiscard]] std::span<const Rect> rects() const noexcept { return {rectArray(), count_}; }

  /// The children of a directory, in entry order. Empty for a leaf.
  [[nodiscard]] std::span<RTreeNodeCore* const> childArray() const noexcept {
    return {childSlots(), isLeaf() ? 0 : count_};
  }

  /// Returns the union of the entries' rects, computed in entry order from the null rect.
  [[nodiscard]] Rect boundingRect() const noexcept;

  /// Returns whether the rect of at least one entry intersects `rect`. As a predicate of prune() it
  /// drops the nodes without such an entry, and is faster than a test of boundingRect(). It does
  /// not test the node's rect in its directory, as intersects() does, whose edges may be rounded.
  [[nodiscard]] bool hasEntryIntersecting(const Rect& rect) const noexcept {
    return anyHit(RTreeBounds::of(rect));
  }

 protected:
  /// The offset of the arrays if they are stored after the node: the size of an RTreeNode. Debug
  /// modes of the C++ library have larger vectors.
  static constexpr std::size_t kHeaderBytes = 56 + sizeof(std::vector<void*>);

  /// Returns for how many entries a new node, which will hold `entries` at first, has space after
  /// it. That is space for a full node, if the capacity is not large, and if the node is likely to
  /// fill up. Further arrays are allocated separately and grow with their contents.
  [[nodiscard]] static std::size_t inlineSlots(std::int64_t capacity, std::size_t entries) noexcept;

  /// Returns the number of bytes after a node.
  [[nodiscard]] static std::size_t trailingBytes(Kind kind, std::size_t inlineSlots,
                                                 std::int64_t capacity) noexcept;

  RTreeNodeCore(Kind kind, std::size_t inlineSlots);

 private:
  friend class RTreeCore;
  friend class RTreeSplitter;

  // The arrays have `slots_` entries, a multiple of 4. The bounds of unused entries are those of
  // null rects, so that several bounds can be compared at once without regard to the count.
  //
  //   leaf        bounds | rect
  //   directory   bounds | area | child | rect
  [[nodiscard]] double* base() const noexcept {
    if (external_ != nullptr) [[unlikely]]
      return external_;
    auto* self = reinterpret_cast<std::byte*>(const_cast<RTreeNodeCore*>(this));
    return reinterpret_cast<double*>(self + kHeaderBytes);
  }
  [[nodiscard]] RTreeBoundsPair* boundsPairs() const noexcept {
    return reinterpret_cast<RTreeBoundsPair*>(base());
  }
  [[nodiscard]] double* areas() const noexcept { return base() + std::size_t{4} * slots_; }
  [[nodiscard]] RTreeNodeCore** childSlots() const noexcept {
    return reinterpret_cast<RTreeNodeCore**>(base() + std::size_t{5} * slots_);
  }
  [[nodiscard]] Rect* rectArray() const noexcept {
    return reinterpret_cast<Rect*>(base() + std::size_t{isLeaf() ? 4U : 6U} * slots_);
  }
  [[nodiscard]] RTreeBounds boundsAt(std::size_t index) const noexcept {
    const RTreeBoundsPair& pair = boundsPairs()[index / 2];
    const std::size_t lane = index % 2;
    return {pair.minX[lane], pair.minY[lane], pair.maxX[lane], pair.maxY[lane]};
  }
  void setBounds(std::size_t index, const RTreeBounds& bounds) noexcept {
    RTreeBoundsPair& pair = boundsPairs()[index / 2];
    const std::size_t lane = index % 2;
    pair.minX[lane] = bounds.minX;
    pair.minY[lane] = bounds.minY;
    pair.maxX[lane] = bounds.maxX;
    pair.maxY[lane] = bounds.maxY;
  }
  void clearBoundsFrom(std::size_t index) noexcept;

  void reserve(std::size_t slots, std::size_t limit);
  [[nodiscard]] std::size_t slotCount() const noexcept { return slots_; }
  void store(std::size_t index, const Rect& rect) noexcept;
  void append(const Rect& rect) noexcept { store(count_++, rect); }
  void append(const Rect& rect, Ref<RTreeNodeCore> child) noexcept;
  bool replaceRect(std::size_t index, const Rect& rect) noexcept;
  void truncate(std::size_t count) noexcept;
  void replaceRects(std::span<const Rect> rects, std::span<const std::uint32_t> order) noexcept;
  void moveEntriesFrom(std::size_t first, RTreeNodeCore& sibling) noexcept;
  [[nodiscard]] std::size_t chooseSubtree(const Rect& rect) const noexcept;
  [[nodiscard]] std::size_t chooseSubtreeLiterally(const Rect& rect) const noexcept;
  [[nodiscard]] std::uint64_t hits(const RTreeBounds& bounds, std::size_t from) const noexcept;
  [[nodiscard]] bool anyHit(const RTreeBounds& bounds) const noexcept;
  void prefetchChildren(std::size_t from, std::uint64_t which) const noexcept;

  /// Returns an empty node of the same element type, which will hold `entries` at first.
  [[nodiscard]] virtual Ref<RTreeNodeCore> makeNode(Kind kind, std::int64_t capacity,
                                                    std::size_t entries) const = 0;
  /// Reserves space for `count` elements of at most `limit` that there will ever be.
  virtual void reserveElements(std::size_t count, std::size_t limit) = 0;
  /// Appends the element at `element`, which is moved from. Space must be reserved.
  virtual void appendElement(void* element) noexcept = 0;
  /// Keeps the elements at the first `kept` positions of `order`, in that order, and moves the
  /// others to `sibling`. Space must be reserved in the sibling and in `spare`, a node used as
  /// working memory.
  virtual void divideElements(std::span<const std::uint32_t> order, std::size_t kept,
                              RTreeNodeCore& spare, RTreeNodeCore& sibling) noexcept = 0;

  double* external_ = nullptr;
  std::uint32_t count_ = 0;
  std::uint32_t slots_ = 0;
  bool mayHoldNull_ = false;
};

}  // namespace tq::detail
