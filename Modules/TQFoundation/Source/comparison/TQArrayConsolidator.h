#pragma once

/// @file TQArrayConsolidator.h
/// Updates an array to match a newer one and keeps matching objects.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq {

/// The blocks of a consolidation. Blocks that are not set are skipped. A consolidation calls copies
/// of them: setting a block, also by a block, takes effect in the next one. Threads: one at a time.
class TQ_EXPORT TQArrayConsolidator {
 public:
  /// See comparisonBlock().
  using ComparisonBlock = TQArrayComparator;
  /// See updateBlock().
  using UpdateBlock = std::function<void(Object& oldItem, Object& newItem)>;
  /// See createBlock().
  using CreateBlock = std::function<Ref<Object>(Object& newItem)>;
  /// See postRemoveBlock().
  using PostRemoveBlock = std::function<void(Object& removedItem)>;

  /// Returns whether an old and a new item match. By default, an item matches only itself.
  [[nodiscard]] const ComparisonBlock& comparisonBlock();
  void setComparisonBlock(ComparisonBlock block) { comparisonBlock_ = std::move(block); }

  /// Updates an old item from the matching new item. Called before the first removal or insertion,
  /// once for each old object that the search found to match any new item, with the last match
  /// found. The old item may still be removed afterwards.
  [[nodiscard]] const UpdateBlock& updateBlock() const noexcept { return updateBlock_; }
  void setUpdateBlock(UpdateBlock block) { updateBlock_ = std::move(block); }

  /// Returns the object to be inserted for a new item. If it returns null, nothing is inserted.
  [[nodiscard]] const CreateBlock& createBlock() const noexcept { return createBlock_; }
  void setCreateBlock(CreateBlock block) { createBlock_ = std::move(block); }

  /// Called after an item has been removed from the array, unless it was moved.
  [[nodiscard]] const PostRemoveBlock& postRemoveBlock() const noexcept { return postRemoveBlock_; }
  void setPostRemoveBlock(PostRemoveBlock block) { postRemoveBlock_ = std::move(block); }

 private:
  ComparisonBlock comparisonBlock_;
  UpdateBlock updateBlock_;
  CreateBlock createBlock_;
  PostRemoveBlock postRemoveBlock_;
};

/// Changes `array` to match `newArray` item by item. Matching items stay, moved items are moved to
/// their new places, and the other items are removed or created. An index beyond the end inserts at
/// the end. The blocks must not change the arrays.
///
/// Errors: exceptions of the blocks propagate. `array` is unchanged until the first removal. After
///         an exception of createBlock or postRemoveBlock, the changes made so far stay.
///         std::bad_alloc is thrown only before the first change.
/// @return true if the arrays differed, even if no block changed anything
TQ_EXPORT bool consolidateAgainst(MutableArray& array, const Array& newArray,
                                  TQArrayConsolidator& withConsolidator);

/// The same on a copy.
/// @param hasChanges  receives whether the arrays differed, unless null
/// @return the copy, or `array` itself if the arrays did not differ
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByConsolidatingAgainst(
    Array& array, const Array& newArray, TQArrayConsolidator& withConsolidator,
    bool* hasChanges = nullptr);

}  // namespace tq
