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
  const auto self = share(*this);  // the delegate may release it
  if (!isComputed_) {
    isComputed_ = true;
    try {
      computeChanges();
    } catch (...) {
      isComputed_ = false;
      mutableChanges_.clear();
      currentParent_ = nullptr;
      walking_ = nullptr;
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
  compareFrom(currentParent_, *root1_, *root2_);
  if (inferMoves_) findCrossArrayMoves();
  walking_ = nullptr;
}

/// Enters a pair one level deeper, and leaves it in the destructor, because the delegate may catch
/// an exception that passes through.
class TQTreeComparison::Descent {
 public:
  Descent(TQTreeComparison& comparison, Place& place)
      : comparison_(comparison), before_(comparison.place_) {
    if (comparison.depth_ > kMaximumDepth) {
      throw Exception(kDepthException,
                      "The trees have more than " + std::to_string(kMaximumDepth) + " levels.");
    }
    comparison_.place_ = &place;
    ++comparison_.depth_;
  }
  ~Descent() {
    comparison_.place_ = before_;
    --comparison_.depth_;
  }
  Descent(const Descent&) = delete;
  Descent& operator=(const Descent&) = delete;

 private:
  TQTreeComparison& comparison_;
  Place* const before_;
};

void TQTreeComparison::compareNode(Object& oldObject, Object& against) {
  for (std::string& name : walking_->propertiesOfObject(*this, oldObject, against)) {
    mutableChanges_.push_back(itemAt(*place_)->addChangeForPropertyNamed(std::move(name)));
  }
  walking_->compareChildrenOf(*this, oldObject, against);
}

TQComparisonItem* TQTreeComparison::currentParent() {
  return place_ != nullptr ? itemAt(*place_).get() : currentParent_.get();
}

const Ref<TQComparisonItem>& TQTreeComparison::itemAt(Place& place) {
  if (!place.item) {
    place.item = TQComparisonPathItem::pathItemWithParent(
        itemAt(*place.above), share(*place.newObject), share(*place.oldObject),
        std::string(place.name), place.index);
  }
  return place.item;
}

/// Compares a pair in depth. Its changes are reported below `parent`, which stays the current
/// parent.
void TQTreeComparison::compareFrom(Ref<TQComparisonItem> parent, Object& oldObject,
                                   Object& newObject) {
  currentParent_ = parent;
  Place place{nullptr,          &oldObject, &newObject, {}, TQComparisonPathItem::kNoIndex,
              std::move(parent)};
  const Descent descent(*this, place);
  compareNode(oldObject, newObject);
}

/// Compares a pair in depth. Its changes are reported below a new path item. Restores the current
/// parent afterwards.
void TQTreeComparison::compareBelow(Object& oldObject, Object& newObject, std::string_view name,
                                    std::int64_t index) {
  Place place{place_, &oldObject, &newObject, name, index, nullptr};
  const Descent descent(*this, place);
  compareNode(oldObject, newObject);
}

void TQTreeComparison::compareOldObject(Object& oldObject, Object& againstNewObject,
                                        std::string_view withName) {
  TQ_ASSERT(place_ != nullptr);
  const auto heldOld = share(oldObject), heldNew = share(againstNewObject);
  const std::string name(withName);  // the delegate may change its text meanwhile
  compareBelow(oldObject, againstNewObject, name, TQComparisonPathItem::kNoIndex);
}

void TQTreeComparison::compareOldArray(const Array& oldArray, const Array& againstNewArray,
                                       std::string_view withName) {
  TQ_ASSERT(place_ != nullptr);
  std::string name(withName);  // the delegate may change its text meanwhile
  // A pair is compared in depth as soon as the search finds that it is the same object.
  const auto isSame = [&](Object& oldItem, std::size_t, Object& newItem, std::size_t newIndex) {
    if (!walking_->isObject(*this, oldItem, newItem)) return false;
    compareBelow(oldItem, newItem, name, static_cast<std::int64_t>(newIndex));
    return true;
  };
  const auto edits = editSequenceTo(oldArray, againstNewArray, inferMoves_, isSame);
  if (!edits) return;
  const Ref<TQComparisonItem>& parent = itemAt(*place_);
  const Ref<TQComparisonItem> path =
      TQComparisonPathItem::pathItemWithParent(parent, Ref<Object>(parent->updatedObject()),
                                               Ref<Object>(parent->oldObject()), std::move(name));
  for (const Ref<TQComparisonArrayChange>& change : *edits) {
    change->setParent(path);
    mutableChanges_.push_back(change);
  }
}

/// Links removals from one array with insertions into another one. Differences inside a moved
/// object are reported below its insertion. The last linked insertion stays the current parent.
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
    compareFrom(share(*insertion), *removal->object(), *insertion->object());
  }
}

}  // namespace tq
