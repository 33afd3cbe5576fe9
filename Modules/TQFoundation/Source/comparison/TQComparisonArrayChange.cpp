#include <TQFoundation/comparison/TQComparisonArrayChange.h>

#include <utility>

namespace tq {

TQComparisonArrayChange::TQComparisonArrayChange(Ref<Object> newObject, Ref<Object> oldObject,
                                                 std::uint64_t index)
    : Subclass(std::move(newObject), std::move(oldObject), nullptr),
      index_(index),
      isInsertion_(updatedObject() != nullptr) {}

Ref<TQComparisonArrayChange> TQComparisonArrayChange::initWithNewObject(Ref<Object> newObject,
                                                                        Ref<Object> oldObject,
                                                                        std::uint64_t atIndex) {
  return Ref<TQComparisonArrayChange>::adopt(
      new TQComparisonArrayChange(std::move(newObject), std::move(oldObject), atIndex));
}

Ref<TQComparisonArrayChange> TQComparisonArrayChange::insertionChangeForItem(
    Ref<Object> item, std::uint64_t atIndex) {
  return initWithNewObject(std::move(item), nullptr, atIndex);
}

Ref<TQComparisonArrayChange> TQComparisonArrayChange::removalChangeForItem(Ref<Object> item,
                                                                           std::uint64_t atIndex) {
  return initWithNewObject(nullptr, std::move(item), atIndex);
}

void TQComparisonArrayChange::setAssociatedChange(TQComparisonArrayChange* other) {
  // Both links are created before either is stored, because the allocation may fail.
  Weak<TQComparisonArrayChange> toOther(other);
  Weak<TQComparisonArrayChange> toThis(this);
  if (const Ref<TQComparisonArrayChange> partner = associatedChange()) {
    partner->associatedChange_ = nullptr;
  }
  associatedChange_ = std::move(toOther);
  if (other != nullptr) other->associatedChange_ = std::move(toThis);
}

std::string TQComparisonArrayChange::property() const {
  const auto* const path = objectCast<TQComparisonPathItem>(parent());
  return path != nullptr ? path->objectName() : std::string();
}

std::string TQComparisonArrayChange::description() const {
  const Object* const changed = object();
  return std::string(isInsertion_ ? "Insert " : "Remove ") +
         (changed != nullptr ? changed->description() : "(null)") + " at " + std::to_string(index_);
}

TQComparisonItem::PathStep TQComparisonArrayChange::pathStep() {
  return {"[" + std::to_string(index_) + "]", parent(), false};
}

}  // namespace tq
