#include <TQFoundation/spatial/RTree.h>

#include <array>
#include <bit>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/spatial/detail/RTreeCore.h>

// An insertion descends along the chosen entries. It allocates every node that splitting will need
// while the tree is still unchanged. Then it ascends, and no step of this can fail. Nothing is
// recursive, because a tree of small nodes can be very high.

namespace tq::detail {
namespace {

using Kind = RTreeNodeCore::Kind;

/// Searching a tree up to this height allocates nothing.
constexpr std::size_t kOrdinaryHeight = 64;

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

bool RTreeCore::isFull(const RTreeNodeCore& node) const noexcept {
  return node.entryCount() >= static_cast<std::size_t>(capacity_);
}

void RTreeCore::insert(const Rect& rect, void* element) {
  RTreeNodeCore& leaf = descend(rect);
  prepare(leaf);
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

/// Allocates all memory that the insertion into `leaf` needs.
void RTreeCore::prepare(RTreeNodeCore& leaf) {
  spares_.clear();
  leaf.reserve(leaf.entryCount() + 1);
  leaf.reserveElements(leaf.entryCount() + 1);
  if (!isFull(leaf)) return;

  const std::size_t count = leaf.entryCount() + 1;
  if (!workspace_) workspace_ = root_->makeNode(Kind::leaf, capacity_);
  workspace_->reserveElements(count);
  splitter_.reserve(count);
  Ref<RTreeNodeCore> sibling = root_->makeNode(Kind::leaf, capacity_);
  sibling->reserve(count);
  sibling->reserveElements(count);

  spares_.reserve(height_ + 2);
  std::size_t level = path_.size();
  while (level > 0 && isFull(*path_[level - 1].directory)) {
    spares_.push_back(root_->makeNode(Kind::directory, capacity_));
    spares_.back()->reserve(path_[level - 1].directory->entryCount() + 1);
    path_[level - 1].directory->reserve(path_[level - 1].directory->entryCount() + 1);
    --level;
  }
  if (level == 0) {
    spares_.push_back(root_->makeNode(Kind::directory, capacity_));
  } else {
    path_[level - 1].directory->reserve(path_[level - 1].directory->entryCount() + 1);
  }
  std::ranges::reverse(spares_);
  spares_.push_back(std::move(sibling));
}

/// Keeps the first group in `leaf`. Returns a new leaf with the second group.
Ref<RTreeNodeCore> RTreeCore::splitLeaf(RTreeNodeCore& leaf) noexcept {
  Ref<RTreeNodeCore> sibling = std::move(spares_.back());
  spares_.pop_back();
  splitter_.plan(leaf);
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
  if (root_->isLeaf()) return root_->anyHit(bounds);
  if (height_ <= kOrdinaryHeight) {
    std::array<Frame, kOrdinaryHeight> frames;
    return search(bounds, frames.data());
  }
  std::vector<Frame> frames(height_);
  return search(bounds, frames.data());
}

/// Searches depth first, in the order of the entries. `frames` must have space for one frame for
/// each level. All children of a directory that will be visited are known before the first one is
/// visited, so they are prefetched.
bool RTreeCore::search(const RTreeBounds& bounds, Frame* frames) const noexcept {
  Frame* top = frames;
  *top = {root_.get(), 0, root_->hits(bounds, 0)};
  top->directory->prefetchChildren(0, top->untried);
  const Frame* const lowest = frames + height_ - 2;  // the directories above the leaves
  for (;;) {
    if (top->untried != 0) {
      const auto offset = static_cast<std::size_t>(std::countr_zero(top->untried));
      top->untried &= top->untried - 1;
      const RTreeNodeCore* child = top->directory->childSlots()[top->from + offset];
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
