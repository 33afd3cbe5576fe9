#include <TQFoundation/comparison/TQTreeComparison.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/objects/Exception.h>

namespace tq {

TQTreeComparison::TQTreeComparison(Ref<Object> root1, Ref<Object> root2, bool inferringMoves,
                                   Weak<TQTreeComparisonDelegate> delegate)
    : inferMoves_(inferringMoves),
      root1_(std::move(root1)),
      root2_(std::move(root2)),
      delegate_(std::move(delegate)) {}

TQTreeComparison::~TQTreeComparison() = default;

Ref<TQTreeComparison> TQTreeComparison::initWithRoot1(Ref<Object> root1, Ref<Object> root2,
                                                      bool inferringMoves,
                                                      Weak<TQTreeComparisonDelegate> delegate) {
  TQ_ASSERT(root1 && root2);
  return Ref<TQTreeComparison>::adopt(new TQTreeComparison(std::move(root1), std::move(root2),
                                                           inferringMoves, std::move(delegate)));
}

std::vector<Ref<TQComparisonItem>> TQTreeComparison::changes() {
  if (!isComputed_) {
    isComputed_ = true;
    try {
      computeChanges();
    } catch (...) {
      isComputed_ = false;
      mutableChanges_.clear();
      currentParent_ = nullptr;
      walking_ = nullptr;
      depth_ = 0;
      throw;
    }
  }
  return mutableChanges_;
}

void TQTreeComparison::computeChanges() {
  currentParent_ = TQComparisonPathItem::pathItemWithParent(nullptr, root2_, root1_, "");
  const Held<TQTreeComparisonDelegate> delegate = delegate_.lock();
  if (!delegate) return;
  walking_ = delegate.get();
  compareNode(*root1_, *root2_);
  if (inferMoves_) findCrossArrayMoves();
  walking_ = nullptr;
}

void TQTreeComparison::compareNode(Object& oldObject, Object& against) {
  if (depth_ > kMaximumDepth) {
    throw Exception(kDepthException,
                    "The trees have more than " + std::to_string(kMaximumDepth) + " levels.");
  }
  ++depth_;
  for (std::string& name : walking_->propertiesOfObject(*this, oldObject, against)) {
    mutableChanges_.push_back(currentParent_->addChangeForPropertyNamed(std::move(name)));
  }
  walking_->compareChildrenOf(*this, oldObject, against);
  --depth_;
}

/// Goes down to a path item below the current one.
void TQTreeComparison::push(Object& oldObject, Object& newObject, std::string_view name,
                            std::int64_t index) {
  Ref<TQComparisonItem> item = TQComparisonPathItem::pathItemWithParent(
      currentParent_, share(newObject), share(oldObject), std::string(name), index);
  currentParent_ = std::move(item);
}

void TQTreeComparison::compareOldObject(Object& oldObject, Object& againstNewObject,
                                        std::string_view withName) {
  TQ_ASSERT(walking_ != nullptr);
  push(oldObject, againstNewObject, withName, TQComparisonPathItem::kNoIndex);
  compareNode(oldObject, againstNewObject);
  currentParent_ = Ref<TQComparisonItem>(currentParent_->parent());
}

void TQTreeComparison::compareOldArray(const Array& oldArray, const Array& againstNewArray,
                                       std::string_view withName) {
  TQ_ASSERT(walking_ != nullptr);
  // Pairs are compared in depth at the moment in which the search calls them the same.
  const auto isSame = [&](Object& oldItem, std::size_t, Object& newItem, std::size_t newIndex) {
    if (!walking_->isObject(*this, oldItem, newItem)) return false;
    Ref<TQComparisonItem> above = currentParent_;
    push(oldItem, newItem, withName, static_cast<std::int64_t>(newIndex));
    compareNode(oldItem, newItem);
    currentParent_ = std::move(above);
    return true;
  };
  const auto edits = editSequenceTo(oldArray, againstNewArray, inferMoves_, isSame);
  if (!edits) return;
  const Ref<TQComparisonItem> path = TQComparisonPathItem::pathItemWithParent(
      currentParent_, Ref<Object>(currentParent_->updatedObject()),
      Ref<Object>(currentParent_->oldObject()), std::string(withName));
  for (const Ref<TQComparisonArrayChange>& change : *edits) {
    change->setParent(path);
    mutableChanges_.push_back(change);
  }
}

/// Pairs what was removed from one array with what was inserted into another one. The current
/// parent stays at the last insertion that was paired: what differs inside a moved object is told
/// below it.
void TQTreeComparison::findCrossArrayMoves() {
  std::vector<TQComparisonArrayChange*> removals;
  std::vector<TQComparisonArrayChange*> insertions;
  for (const Ref<TQComparisonItem>& item : mutableChanges_) {
    const unsigned type = item->type();
    if (type != TQComparisonItem::kArrayRemoval && type != TQComparisonItem::kArrayInsertion) {
      continue;
    }
    auto* const change = static_cast<TQComparisonArrayChange*>(item.get());
    if (change->isMove()) continue;
    (change->isRemoval() ? removals : insertions).push_back(change);
  }
  for (TQComparisonArrayChange* const removal : removals) {
    const auto match =
        std::ranges::find_if(insertions, [&](const TQComparisonArrayChange* insertion) {
          return insertion->parent() != removal->parent() &&
                 walking_->isObject(*this, *removal->object(), *insertion->object());
        });
    if (match == insertions.end()) continue;
    TQComparisonArrayChange* const insertion = *match;
    insertions.erase(match);
    removal->setAssociatedChange(insertion);
    currentParent_ = share(*insertion);
    compareNode(*removal->object(), *insertion->object());
  }
}

}  // namespace tq
