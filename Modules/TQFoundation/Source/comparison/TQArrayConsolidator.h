#pragma once

/// @file TQArrayConsolidator.h
/// Bringing an array up to date with a newer one, its objects kept where they can be.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq {

/// How an array is consolidated. A block that is not set is left out. Threads: one at a time.
class TQ_EXPORT TQArrayConsolidator {
 public:
  /// Whether an old and a new item, told with their indices, match.
  using ComparisonBlock = TQArrayComparator;
  /// See updateBlock().
  using UpdateBlock = std::function<void(Object& oldItem, Object& newItem)>;
  /// See createBlock().
  using CreateBlock = std::function<Ref<Object>(Object& newItem)>;
  /// See postRemoveBlock().
  using PostRemoveBlock = std::function<void(Object& removedItem)>;

  /// Which items match; by default an item matches itself alone.
  [[nodiscard]] const ComparisonBlock& comparisonBlock();
  void setComparisonBlock(ComparisonBlock block) { comparisonBlock_ = std::move(block); }

  /// Brings an old item up to date from the new one that matches it. Called before anything is
  /// removed or inserted, once for each old item that was ever found to match, with the last match:
  /// that item may be removed afterwards.
  [[nodiscard]] const UpdateBlock& updateBlock() const noexcept { return updateBlock_; }
  void setUpdateBlock(UpdateBlock block) { updateBlock_ = std::move(block); }

  /// Makes the object to be inserted for a new item; none inserts nothing.
  [[nodiscard]] const CreateBlock& createBlock() const noexcept { return createBlock_; }
  void setCreateBlock(CreateBlock block) { createBlock_ = std::move(block); }

  /// Told of an item that has left the array and does not come back elsewhere.
  [[nodiscard]] const PostRemoveBlock& postRemoveBlock() const noexcept { return postRemoveBlock_; }
  void setPostRemoveBlock(PostRemoveBlock block) { postRemoveBlock_ = std::move(block); }

 private:
  ComparisonBlock comparisonBlock_;
  UpdateBlock updateBlock_;
  CreateBlock createBlock_;
  PostRemoveBlock postRemoveBlock_;
};

/// Makes `array` match `newArray` item by item: what matches stays, what was moved is put in its
/// new place, the rest is removed or created. An index beyond the end inserts at the end.
///
/// Failure: what a block throws passes through. Until the first removal the array is untouched;
///          what createBlock and postRemoveBlock throw leaves the changes made so far. Memory runs
///          out before the first change or not at all.
/// @return whether there was anything to change, even if it came to nothing
TQ_EXPORT bool consolidateAgainst(MutableArray& array, const Array& newArray,
                                  TQArrayConsolidator& withConsolidator);

/// The same on a copy. @return the copy, or `array` itself when there was nothing to change
/// @param hasChanges  says which of the two, unless null
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByConsolidatingAgainst(
    Array& array, const Array& newArray, TQArrayConsolidator& withConsolidator,
    bool* hasChanges = nullptr);

}  // namespace tq
