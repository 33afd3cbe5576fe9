#include <TQFoundation/spatial/RTreeNode.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQMemory.h>
#include <TQFoundation/spatial/detail/RTreeNodeCore.h>
#include <TQFoundation/spatial/detail/RTreePair.h>

// The part of a node that is independent of the element type. The results are bit for bit those of
// the plain rect functions. The bounds are stored beside the rects only to avoid standardising the
// rects again.

namespace tq::detail {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::size_t kFirstSlots = 128;

/// The largest capacity of a node that has space for all its entries after it.
constexpr std::int64_t kLargestInlineCapacity = 127;

/// A node that holds less than an eighth of its capacity at first may never fill up. Splits of
/// rects that are equal or flat leave many nodes with a single entry.
constexpr std::size_t kSmallPart = 8;

/// The number of entries whose growths chooseSubtree() stores at the same time.
constexpr std::size_t kMostCompared = 64;

double areaOf(const Rect& rect) noexcept { return rect.size.width * rect.size.height; }

constexpr std::size_t doublesPerSlot(RTreeNodeCore::Kind kind) noexcept {
  return kind == RTreeNodeCore::Kind::leaf ? 8 : 10;
}

constexpr std::size_t roundUpToFour(std::size_t count) noexcept { return (count + 3) / 4 * 4; }

/// One axis of a union under construction. After each step the maximum is computed from minimum and
/// extent, as it would be for a rect.
struct Span {
  double min;
  double max;
  double extent;

  void add(double otherMin, double otherMax) noexcept {
    min = min < otherMin ? min : otherMin;
    extent = (max > otherMax ? max : otherMax) - min;
    max = min + extent;
  }
};

}  // namespace

std::size_t RTreeNodeCore::inlineSlots(std::int64_t capacity, std::size_t entries) noexcept {
  const auto most = static_cast<std::size_t>(capacity);
  if (entries <= most / kSmallPart) return roundUpToFour(std::clamp<std::size_t>(entries, 1, 16));
  // With space for the entry that makes a node overflow.
  return capacity <= kLargestInlineCapacity ? roundUpToFour(most + 1) : 0;
}

/// The slots are rounded up for the bounds. The rects, which are last, need space only for the
/// possible entries.
std::size_t RTreeNodeCore::trailingBytes(Kind kind, std::size_t inlineSlots,
                                         std::int64_t capacity) noexcept {
  const std::size_t rects = std::min(inlineSlots, static_cast<std::size_t>(capacity) + 1);
  return inlineSlots * (doublesPerSlot(kind) * sizeof(double) - sizeof(Rect)) +
         rects * sizeof(Rect);
}

RTreeNodeCore::RTreeNodeCore(Kind kind, std::size_t inlineSlots)
    : Object(ObjectKind::other, static_cast<std::uint8_t>(kind)),
      slots_(static_cast<std::uint32_t>(inlineSlots)) {
  if (inlineSlots == 0) {
    reserve(kFirstSlots, kFirstSlots);
  } else {
    clearBoundsFrom(0);
  }
}

// A chain of single children may be long. Object limits the stack depth of releasing it.
RTreeNodeCore::~RTreeNodeCore() {
  for (const RTreeNodeCore* child : childArray()) child->release();
  if (external_ != nullptr) freeObjectMemory(external_);
}

/// Reserves space for `slots` entries of at most `limit` that there will ever be. The arrays move
/// out of a node that has no space after it; the node itself does not move.
void RTreeNodeCore::reserve(std::size_t slots, std::size_t limit) {
  if (slots <= slots_) return;
  limit = roundUpToFour(limit);
  slots = std::max(roundUpToFour(slots), std::size_t{slots_ < 16 ? 4U : 2U} * slots_);
  if (slots > limit / 2) slots = std::max(roundUpToFour(slots_ + 1), limit);
  TQ_ASSERT(slots <= std::numeric_limits<std::uint32_t>::max());
  const std::size_t doubles = doublesPerSlot(nodeKind());
  auto* grown = static_cast<double*>(allocateObjectMemory(slots * doubles * sizeof(double)));
  const double* const before = base();
  std::memcpy(grown, before, slots_ * sizeof(RTreeBounds));
  const std::size_t rects = doubles - 4;
  for (std::size_t array = 4; array < rects; ++array) {
    std::memcpy(grown + array * slots, before + array * slots_, count_ * sizeof(double));
  }
  std::memcpy(grown + rects * slots, before + rects * slots_, count_ * sizeof(Rect));
  if (external_ != nullptr) freeObjectMemory(external_);
  external_ = grown;
  slots_ = static_cast<std::uint32_t>(slots);
  clearBoundsFrom(count_);
}

void RTreeNodeCore::clearBoundsFrom(std::size_t index) noexcept {
  if (!isLeaf()) std::fill(areas() + index, areas() + slots_, -kInf);
  if (index % 2 != 0) setBounds(index++, {kInf, kInf, -kInf, -kInf});
  std::fill(boundsPairs() + index / 2, boundsPairs() + slots_ / 2,
            RTreeBoundsPair{{kInf, kInf}, {kInf, kInf}, {-kInf, -kInf}, {-kInf, -kInf}});
}

void RTreeNodeCore::store(std::size_t index, const Rect& rect) noexcept {
  setBounds(index, RTreeBounds::of(rect));
  rectArray()[index] = rect;
  if (!isLeaf()) areas()[index] = areaOf(rect);
  mayHoldNull_ = mayHoldNull_ || RectIsNull(rect);
}

void RTreeNodeCore::append(const Rect& rect, Ref<RTreeNodeCore> child) noexcept {
  childSlots()[count_] = child.leak();
  append(rect);
}

/// @return whether any bit of the rect changed
bool RTreeNodeCore::replaceRect(std::size_t index, const Rect& rect) noexcept {
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): -0 and NaN must differ too.
  if (std::memcmp(&rectArray()[index], &rect, sizeof rect) == 0) return false;
  store(index, rect);
  return true;
}

void RTreeNodeCore::truncate(std::size_t count) noexcept {
  count_ = static_cast<std::uint32_t>(count);
  clearBoundsFrom(count);
}

/// Replaces the entries of a leaf by those at the positions `order` of `rects`, which are not more
/// than before.
void RTreeNodeCore::replaceRects(std::span<const Rect> rects,
                                 std::span<const std::uint32_t> order) noexcept {
  mayHoldNull_ = false;
  for (std::size_t i = 0; i < order.size(); ++i) store(i, rects[order[i]]);
  truncate(order.size());
}

/// Moves a directory's entries from position `first` on to `sibling`, in the same order.
void RTreeNodeCore::moveEntriesFrom(std::size_t first, RTreeNodeCore& sibling) noexcept {
  for (std::size_t i = first; i < count_; ++i) {
    sibling.append(rectArray()[i], Ref<RTreeNodeCore>::adopt(childSlots()[i]));
  }
  truncate(first);
}

Rect RTreeNodeCore::boundingRect() const noexcept {
  const std::span<const Rect> all = rects();
  if (mayHoldNull_ || all.size() < 2) {
    Rect united = RectNull;
    for (const Rect& rect : all) united = RectUnion(united, rect);
    return united;
  }
  const RTreeBounds first = boundsAt(0);
  Span x{first.minX, first.maxX, 0};
  Span y{first.minY, first.maxY, 0};
  for (std::size_t i = 1; i < all.size(); ++i) {
    const RTreeBounds bounds = boundsAt(i);
    x.add(bounds.minX, bounds.maxX);
    y.add(bounds.minY, bounds.maxY);
  }
  return {x.min, y.min, x.extent, y.extent};
}

/// Returns the entry whose area grows least if `rect` is added to it. Ties are decided by the
/// smaller area, then by the earlier position. A growth of NaN is never smaller.
std::size_t RTreeNodeCore::chooseSubtree(const Rect& rect) const noexcept {
  TQ_ASSERT(count_ != 0);
  if (mayHoldNull_ || RectIsNull(rect) || count_ > kMostCompared)
    return chooseSubtreeLiterally(rect);
  const RTreeBounds bounds = RTreeBounds::of(rect);
  const RTreeBoundsPair* const pairs = boundsPairs();
  Pair increases[kMostCompared / 2];
  increases[0] = unionArea(pairs[0], bounds) - load(areas());
  Pair least = both(increases[0][0]);
  for (std::size_t i = 0; i < count_; i += 2) {
    increases[i / 2] = unionArea(pairs[i / 2], bounds) - load(areas() + i);
    least = lesser(increases[i / 2], least);
  }
  least = lesser(both(least[1]), both(least[0]));

  // Usually a single entry has the least growth. If the least growth is NaN, it is that of the
  // first entry and equals no other.
  std::uint64_t equals = 0;
  for (std::size_t i = 0; i < count_; i += 2) {
    equals |= std::uint64_t{laneBits(increases[i / 2] == least)} << i;
  }
  equals &=
      ~std::uint64_t{0} >> (kMostCompared - count_);  // without the empty slot of an odd count
  auto best = static_cast<std::size_t>(equals != 0 ? std::countr_zero(equals) : 0);
  while ((equals &= equals - 1) != 0) {
    const auto other = static_cast<std::size_t>(std::countr_zero(equals));
    if (areas()[other] < areas()[best]) best = other;
  }
  return best;
}

/// The same with the rect functions, for nodes with null rects and for large nodes.
std::size_t RTreeNodeCore::chooseSubtreeLiterally(const Rect& rect) const noexcept {
  const std::span<const Rect> all = rects();
  std::size_t best = 0;
  double leastIncrease = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const double area = areaOf(all[i]);
    const double increase = areaOf(RectUnion(all[i], rect)) - area;
    if (i == 0 || increase < leastIncrease ||
        (increase == leastIncrease && area < areaOf(all[best]))) {
      best = i;
      leastIncrease = increase;
    }
  }
  return best;
}

/// Returns, as bits, which of the 64 entries from `from` on intersect `bounds`. `from` must be a
/// multiple of 64.
std::uint64_t RTreeNodeCore::hits(const RTreeBounds& bounds, std::size_t from) const noexcept {
  const std::size_t end = std::min<std::size_t>(count_, from + 64);
  const RTreeBoundsPair* pairs = boundsPairs();
  std::uint64_t result = 0;
  for (std::size_t i = from; i < end; i += 4) {
    const std::uint64_t four =
        laneBits(meet(pairs[i / 2], bounds)) | laneBits(meet(pairs[i / 2 + 1], bounds)) << 2;
    result |= four << (i - from);
  }
  return result;
}

bool RTreeNodeCore::anyHit(const RTreeBounds& bounds) const noexcept {
  const RTreeBoundsPair* pairs = boundsPairs();
  for (std::size_t i = 0; i < count_; i += 4) {
    if (laneBits(meet(pairs[i / 2], bounds) | meet(pairs[i / 2 + 1], bounds)) != 0) return true;
  }
  return false;
}

/// Prefetches the bounds of the children from position `from` on whose bits are set, except the
/// first, which is about to be read. Nodes are usually half to two thirds full, so only that part
/// is fetched.
void RTreeNodeCore::prefetchChildren(std::size_t from, std::uint64_t which) const noexcept {
  const std::size_t byteCount =
      kHeaderBytes + (external_ == nullptr ? slots_ / 3 * sizeof(RTreeBoundsPair) : 0);
  for (which &= which - 1; which != 0; which &= which - 1) {
    const auto index = from + static_cast<std::size_t>(std::countr_zero(which));
    const auto* child = reinterpret_cast<const std::byte*>(childSlots()[index]);
    for (std::size_t at = 0; at < byteCount; at += sizeof(RTreeBoundsPair)) {
      __builtin_prefetch(child + at);
    }
  }
}

}  // namespace tq::detail
