#pragma once

/// @file TQComparisonArrayChange.h
/// One element put into an array or taken out of it.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQComparisonItem.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {

/// An insertion or a removal; two that are linked are the halves of a move.
/// Its path is the parent's, followed at once by the index in square brackets.
class TQ_EXPORT TQComparisonArrayChange final
    : public Subclass<TQComparisonArrayChange, TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonArrayChange";

  /// `index`: a place in the new array.
  [[nodiscard]] static Ref<TQComparisonArrayChange> insertionChangeForItem(Ref<Object> item,
                                                                           std::uint64_t atIndex);
  /// `index`: a place in the old array.
  [[nodiscard]] static Ref<TQComparisonArrayChange> removalChangeForItem(Ref<Object> item,
                                                                         std::uint64_t atIndex);
  /// An insertion when there is a new object, a removal otherwise. It has no parent yet.
  [[nodiscard]] static Ref<TQComparisonArrayChange> initWithNewObject(Ref<Object> newObject,
                                                                      Ref<Object> oldObject,
                                                                      std::uint64_t atIndex);

  /// Either an insertion or a removal; a move is both, linked.
  [[nodiscard]] bool isInsertion() const noexcept { return isInsertion_; }
  [[nodiscard]] bool isRemoval() const noexcept { return !isInsertion_; }
  /// True while the other half of a move is alive and linked.
  [[nodiscard]] bool isMove() const noexcept { return !associatedChange_.isGone(); }
  /// Of an insertion the place in the new array, of a removal the one in the old array.
  [[nodiscard]] std::uint64_t index() const noexcept { return index_; }

  /// The other half of a move, or none. Both links are weak: the list of changes owns the changes.
  [[nodiscard]] Ref<TQComparisonArrayChange> associatedChange() const {
    return associatedChange_.lock();
  }
  /// Links this change and `other`, or unlinks this one for none. The partner that this change had
  /// loses its link; one that `other` had keeps its own.
  void setAssociatedChange(TQComparisonArrayChange* other);

  /// The name of the relationship, when a path item with a name is the parent; else empty.
  [[nodiscard]] std::string property() const;

  /// kArrayInsertion or kArrayRemoval.
  [[nodiscard]] unsigned type() const noexcept override {
    return isInsertion_ ? kArrayInsertion : kArrayRemoval;
  }
  /// The new object of an insertion, the old one of a removal.
  [[nodiscard]] Object* object() const noexcept override {
    return isInsertion_ ? updatedObject() : oldObject();
  }
  /// The parent's path and the index in brackets.
  [[nodiscard]] std::string internalFullPath() override { return joinedPath(); }
  /// "Insert <object> at 3", "Remove <object> at 3".
  [[nodiscard]] std::string description() const override;

 private:
  TQComparisonArrayChange(Ref<Object> newObject, Ref<Object> oldObject, std::uint64_t index);
  [[nodiscard]] PathStep pathStep() override;

  Weak<TQComparisonArrayChange> associatedChange_;
  const std::uint64_t index_;
  const bool isInsertion_;
};

/// Changes in the order in which they are applied: removals by falling index, then insertions by
/// rising index.
using TQArrayChanges = std::vector<Ref<TQComparisonArrayChange>>;

}  // namespace tq
