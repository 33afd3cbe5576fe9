#include <TQFoundation/spatial/RTree.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <new>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/spatial/detail/RTreeCore.h>
#include <TQFoundation/spatial/detail/RTreeIndex.h>

// An insertion descends along the chosen entries. It allocates every node that splitting will need
// while the tree is still unchanged. Then it ascends, and no step of this can fail. Nothing is
// recursive, because a tree of small nodes can be very high.
//
// A query searches the nodes until such queries have cost as much as building an index. From then
// on queries use the index, and search the nodes only where the index is not sure. Work is counted
// in units of one bucket of the index that is scanned, about 5 ns:
//
//   state                         a query adds           the index is built when the work reaches
//   no index                      4 for each node        its cost, without an insertion meanwhile;
//                                                        else 8 times its cost
//   index with unpacked elements  1 for each bucket      the cost of packing them
//   index                         0
//
// So a tree that is only queried pays at most twice, and one that changes between queries loses at
// most an eighth. An insertion extends the index if there is one. If more elements are inserted
// than the queries pay for, the insertion drops the index.

namespace tq::detail {
namespace {

using Kind = RTreeNodeCore::Kind;

/// Searching a tree up to this height allocates nothing.
constexpr std::size_t kOrdinaryHeight = 64;

/// Smaller trees are searched without an index.
constexpr std::size_t kSmallestIndexed = 64;

constexpr std::uint64_t kNodeWork = 4;
constexpr std::uint64_t kBuildWork = 16;  // for each element
constexpr std::uint64_t kPatience = 8;

/// Returns how many elements may be outside the packed part of the index, and how many a query may
/// pack again. It limits the memory of indexes that are replaced but not released yet.
constexpr std::size_t looseLimit(std::size_t elementCount) noexcept {
  return std::max<std::size_t>(512, elementCount / 32);
}

}  // namespace

/// A directory that is being searched: the bits of those of the 64 entries from `from` on that are
/// still to be visited.
struct RTreeCore::Frame {
  const RTreeNodeCore* directory;
  std::size_t from;
  std::uint64_t untried;
};

RTreeCore::RTreeCore(Ref<RTreeNodeCore> root, std::int64_t capacity)
    : root_(std::move(root)), capacity_(capacity) {}

RTreeCore::~RTreeCore() { delete index_.load(); }

bool RTreeCore::isFull(const RTreeNodeCore& node) const noexcept {
  return node.entryCount() >= static_cast<std::size_t>(capacity_);
}

void RTreeCore::insert(const Rect& rect, void* element) {
  RTreeNodeCore& leaf = descend(rect);
  prepare(leaf, rect);
  const bool overflows = isFull(leaf);
  leaf.append(rect);
  leaf.appendElement(element);
  if (overflows) {
    Ref<RTreeNodeCore> sibling = splitLeaf(leaf);
    ascend(leaf.boundingRect(), std::move(sibling));
  } else if (!path_.empty()) {
    // The rect is the last one in the leaf, so adding it continues the union of the others.
    const Step& parent = path_.back();
    ascend(RectUnion(parent.directory->rects()[parent.index], rect), nullptr);
  }
  ++elementCount_;
  keepIndexed(rect);
}

/// Adds a new rect to the index, if there is one. Like the whole insertion, this runs alone.
void RTreeCore::keepIndexed(const Rect& rect) noexcept {
  workBefore_ = work_.load(std::memory_order_relaxed);
  std::unique_ptr<RTreeIndex> index(index_.load(std::memory_order_relaxed));
  if (index == nullptr) return;
  index->replaced = nullptr;
  try {
    index->append(rect);
    if (index->tailCount() > 0 && workBefore_ >= kBuildWork * index->tailCount()) {
      index = index->packed(elementCount_);
      work_.store(0, std::memory_order_relaxed);
      workBefore_ = 0;
    } else if (index->tailCount() > looseLimit(elementCount_)) {
      index = nullptr;
    }
  } catch (const std::bad_alloc&) {
    index = nullptr;
  }
  index_.store(index.release(), std::memory_order_relaxed);
}

/// Returns the leaf for `rect` and stores the path to it in path_.
RTreeNodeCore& RTreeCore::descend(const Rect& rect) {
  path_.clear();
  path_.reserve(height_);
  RTreeNodeCore* node = root_.get();
  while (!node->isLeaf()) {
    const std::size_t index = node->chooseSubtree(rect);
    path_.push_back({node, index});
    node = node->childArray()[index];
  }
  return *node;
}

/// Allocates all memory that the insertion of `rect` into `leaf` needs. Plans the split, if any.
void RTreeCore::prepare(RTreeNodeCore& leaf, const Rect& rect) {
  spares_.clear();
  const std::size_t count = leaf.entryCount() + 1;
  leaf.reserve(count, entryLimit());
  leaf.reserveElements(count, entryLimit());
  if (!isFull(leaf)) return;

  if (!workspace_) workspace_ = root_->makeNode(Kind::leaf, capacity_, 0);
  workspace_->reserveElements(count, count);
  splitter_.reserve(count);
  leaf.append(rect);
  splitter_.plan(leaf);
  leaf.truncate(count - 1);

  const std::size_t moved = count - splitter_.firstGroupCount();
  Ref<RTreeNodeCore> sibling = root_->makeNode(Kind::leaf, capacity_, moved);
  sibling->reserve(moved, entryLimit());
  const bool isSmall = sibling->slotCount() < count;
  sibling->reserveElements(isSmall ? moved : count, entryLimit());

  spares_.reserve(height_ + 2);
  std::size_t level = path_.size();
  const auto full = static_cast<std::size_t>(capacity_);
  while (level > 0 && isFull(*path_[level - 1].directory)) {
    spares_.push_back(root_->makeNode(Kind::directory, capacity_, full));
    RTreeNodeCore& directory = *path_[level - 1].directory;
    spares_.back()->reserve(directory.entryCount() + 1, entryLimit());
    directory.reserve(directory.entryCount() + 1, entryLimit());
    --level;
  }
  if (level == 0) {
    spares_.push_back(root_->makeNode(Kind::directory, capacity_, full));
  } else {
    RTreeNodeCore& directory = *path_[level - 1].directory;
    directory.reserve(directory.entryCount() + 1, entryLimit());
  }
  std::ranges::reverse(spares_);
  spares_.push_back(std::move(sibling));
}

/// Keeps the first group of the planned split in `leaf`. Returns a new leaf with the second group.
Ref<RTreeNodeCore> RTreeCore::splitLeaf(RTreeNodeCore& leaf) noexcept {
  Ref<RTreeNodeCore> sibling = std::move(spares_.back());
  spares_.pop_back();
  const std::span<const std::uint32_t> order = splitter_.order();
  const std::size_t kept = splitter_.firstGroupCount();
  leaf.divideElements(order, kept, *workspace_, *sibling);
  leaf.replaceRects(splitter_.rects(), order.first(kept));
  for (const std::uint32_t index : order.subspan(kept)) sibling->append(splitter_.rects()[index]);
  return sibling;
}

/// Splits a directory by entry order, not by the rects: it keeps the first half.
Ref<RTreeNodeCore> RTreeCore::splitDirectory(RTreeNodeCore& directory) noexcept {
  Ref<RTreeNodeCore> sibling = std::move(spares_.back());
  spares_.pop_back();
  directory.moveEntriesFrom((static_cast<std::size_t>(capacity_) + 1) / 2, *sibling);
  return sibling;
}

/// Propagates the change of a child up to the root: its new bounding rect, and the sibling that was
/// split off, if any. Stops where nothing changes.
void RTreeCore::ascend(Rect childRect, Ref<RTreeNodeCore> sibling) noexcept {
  for (std::size_t level = path_.size(); level > 0; --level) {
    RTreeNodeCore& directory = *path_[level - 1].directory;
    const bool changed = directory.replaceRect(path_[level - 1].index, childRect);
    if (!changed && !sibling) return;
    if (sibling) {
      const bool overflows = isFull(directory);
      const Rect siblingRect = sibling->boundingRect();
      directory.append(siblingRect, std::exchange(sibling, nullptr));
      if (overflows) sibling = splitDirectory(directory);
    }
    if (level > 1 || sibling) childRect = directory.boundingRect();
  }
  if (!sibling) return;
  Ref<RTreeNodeCore> root = std::move(spares_.back());
  spares_.pop_back();
  root->append(childRect, std::move(root_));
  const Rect siblingRect = sibling->boundingRect();
  root->append(siblingRect, std::move(sibling));
  root_ = std::move(root);
  ++height_;
}

bool RTreeCore::intersects(const Rect& rect) const {
  const RTreeBounds bounds = RTreeBounds::of(rect);
  std::uint64_t work = 0;
  if (elementCount_ < kSmallestIndexed) return searchNodes(bounds, work);
  // acquire: the index was complete before its pointer was published
  const RTreeIndex* const index = index_.load(std::memory_order_acquire);
  if (index == nullptr) {
    const bool found = searchNodes(bounds, work);
    addWork(work, elementCount_);
    return found;
  }
  const auto entries = static_cast<std::size_t>(
      std::min(static_cast<std::uint64_t>(capacity_), std::uint64_t{elementCount_}));
  const RTreeFinding finding = index->find(bounds, height_, entries);
  if (index->tailCount() != 0) addWork(index->tailBuckets(), index->tailCount());
  if (finding != RTreeFinding::unsure) return finding == RTreeFinding::found;
  return searchNodes(bounds, work);
}

/// Counts the work of a query. Builds the index when that was enough for `unindexed` elements.
void RTreeCore::addWork(std::uint64_t work, std::size_t unindexed) const noexcept {
  // relaxed: only a count; an addition that another thread overwrites does no harm
  const std::uint64_t sum = work_.load(std::memory_order_relaxed) + work;
  work_.store(sum, std::memory_order_relaxed);
  const std::uint64_t cost = kBuildWork * unindexed;
  const std::uint64_t recent = sum - std::min(sum, workBefore_);
  if (recent >= cost || sum >= kPatience * cost) buildIndex();
}

/// Builds the index, or packs it again. Queries on other threads continue with the existing one. If
/// memory is exhausted, nothing changes.
void RTreeCore::buildIndex() const noexcept {
  if (isBuilding_.exchange(true)) return;
  RTreeIndex* const old = index_.load();
  // Another thread may have built it since this one looked.
  if (old == nullptr || old->tailCount() != 0) {
    try {
      std::unique_ptr<RTreeIndex> built = old == nullptr ? std::make_unique<RTreeIndex>(*root_)
                                                         : old->packed(looseLimit(elementCount_));
      built->replaced.reset(old);  // other threads may use it until the next insertion
      // release: a thread that sees the pointer sees the index
      index_.store(built.release(), std::memory_order_release);
    } catch (const std::bad_alloc&) {  // the nodes are searched instead
    }
    work_.store(0, std::memory_order_relaxed);
  }
  isBuilding_.store(false);
}

/// Searches through the nodes.
/// @param work  increased by what the search costs
bool RTreeCore::searchNodes(const RTreeBounds& bounds, std::uint64_t& work) const {
  if (root_->isLeaf()) {
    work += root_->entryCount() / 8;
    return root_->anyHit(bounds);
  }
  if (height_ <= kOrdinaryHeight) {
    std::array<Frame, kOrdinaryHeight> frames;
    return search(bounds, frames.data(), work);
  }
  std::vector<Frame> frames(height_);
  return search(bounds, frames.data(), work);
}

/// Searches depth first, in the order of the entries. `frames` must have space for one frame for
/// each level. All children of a directory that will be visited are known before the first one is
/// visited, so they are prefetched.
bool RTreeCore::search(const RTreeBounds& bounds, Frame* frames,
                       std::uint64_t& work) const noexcept {
  Frame* top = frames;
  *top = {root_.get(), 0, root_->hits(bounds, 0)};
  top->directory->prefetchChildren(0, top->untried);
  const Frame* const lowest = frames + height_ - 2;  // the directories above the leaves
  for (;;) {
    if (top->untried != 0) {
      const auto offset = static_cast<std::size_t>(std::countr_zero(top->untried));
      top->untried &= top->untried - 1;
      const RTreeNodeCore* child = top->directory->childSlots()[top->from + offset];
      work += kNodeWork;
      if (top == lowest) {
        if (child->anyHit(bounds)) return true;
      } else {
        *++top = {child, 0, child->hits(bounds, 0)};
        child->prefetchChildren(0, top->untried);
      }
    } else if (top->from + 64 < top->directory->entryCount()) {
      top->from += 64;
      top->untried = top->directory->hits(bounds, top->from);
      top->directory->prefetchChildren(top->from, top->untried);
    } else if (top == frames) {
      return false;
    } else {
      --top;
    }
  }
}

}  // namespace tq::detail
