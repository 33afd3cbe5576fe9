#pragma once

/// @file TQComparisonArrayChange.h
/// Changes of an array: insertions, removals and moves.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQComparisonItem.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {

/// An insertion or a removal of one element. A linked pair of them is a move. The path is the
/// parent's path followed by the index in square brackets, as in "children[2]".
class TQ_EXPORT TQComparisonArrayChange final
    : public Subclass<TQComparisonArrayChange, TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonArrayChange";

  /// Creates an insertion; `atIndex` is an index in the new array.
  [[nodiscard]] static Ref<TQComparisonArrayChange> insertionChangeForItem(Ref<Object> item,
                                                                           std::uint64_t atIndex);
  /// Creates a removal; `atIndex` is an index in the old array.
  [[nodiscard]] static Ref<TQComparisonArrayChange> removalChangeForItem(Ref<Object> item,
                                                                         std::uint64_t atIndex);
  /// Creates an insertion if `newObject` is not null, otherwise a removal. It has no parent.
  [[nodiscard]] static Ref<TQComparisonArrayChange> initWithNewObject(Ref<Object> newObject,
                                                                      Ref<Object> oldObject,
                                                                      std::uint64_t atIndex);

  /// Each change is either an insertion or a removal.
  [[nodiscard]] bool isInsertion() const noexcept { return isInsertion_; }
  [[nodiscard]] bool isRemoval() const noexcept { return !isInsertion_; }
  /// True if the change is linked with the other half of a move, and that half is alive.
  [[nodiscard]] bool isMove() const noexcept { return !associatedChange_.expired(); }
  /// Returns the index of an insertion in the new array, or of a removal in the old array.
  [[nodiscard]] std::uint64_t index() const noexcept { return index_; }

  /// Returns the other half of a move, or null. The link is weak; the list of changes owns both.
  [[nodiscard]] Ref<TQComparisonArrayChange> associatedChange() const {
    return associatedChange_.lock();
  }
  /// Links this change and `other`; null unlinks this change. The previous partner of this change
  /// loses its link. The previous partner of `other` keeps its link.
  void setAssociatedChange(TQComparisonArrayChange* other);

  /// Returns the name of the relationship if the parent is a path item, otherwise "".
  [[nodiscard]] std::string property() const;

  /// Returns kArrayInsertion or kArrayRemoval.
  [[nodiscard]] unsigned type() const noexcept override {
    return isInsertion_ ? kArrayInsertion : kArrayRemoval;
  }
  /// Returns the new object of an insertion, or the old object of a removal.
  [[nodiscard]] Object* object() const noexcept override {
    return isInsertion_ ? updatedObject() : oldObject();
  }
  /// Returns the parent's path and the index in brackets.
  [[nodiscard]] std::string internalFullPath() override { return joinedPath(); }
  /// Returns "Insert <object> at 3" or "Remove <object> at 3".
  [[nodiscard]] std::string description() const override;

 private:
  TQComparisonArrayChange(Ref<Object> newObject, Ref<Object> oldObject, std::uint64_t index);
  [[nodiscard]] PathStep pathStep() override;

  Weak<TQComparisonArrayChange> associatedChange_;
  const std::uint64_t index_;
  const bool isInsertion_;
};

/// Changes in the order in which they are applied: removals in descending order of index, then
/// insertions in ascending order of index.
using TQArrayChanges = std::vector<Ref<TQComparisonArrayChange>>;

}  // namespace tq
