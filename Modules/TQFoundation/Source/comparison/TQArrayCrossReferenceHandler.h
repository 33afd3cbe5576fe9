#pragma once

/// @file TQArrayCrossReferenceHandler.h
/// Reports common, removed and added items of two arrays.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq {

/// The blocks of a cross-reference. A cross-reference calls copies of them: setting a block,
/// also by a block, takes effect in the next one. Threads: one at a time.
class TQ_EXPORT TQArrayCrossReferenceHandler {
 public:
  /// Returns whether an old and a new item match. Receives their indices too.
  using IndexedComparisonBlock = TQArrayComparator;
  /// Returns whether an old and a new item match.
  using ComparisonBlock = std::function<bool(Object& oldItem, Object& newItem)>;
  /// See itemsMatchedBlock().
  using ItemsMatchedBlock = std::function<void(Object& oldItem, Object& newItem)>;
  /// See itemRemovedBlock() and itemAddedBlock().
  using ItemBlock = std::function<void(Object& item)>;

  /// Compares items. Takes precedence over comparisonBlock() if it is set.
  [[nodiscard]] const IndexedComparisonBlock& indexedComparisonBlock() const noexcept {
    return indexedComparisonBlock_;
  }
  void setIndexedComparisonBlock(IndexedComparisonBlock block) {
    indexedComparisonBlock_ = std::move(block);
  }

  /// Compares items. By default, equal items match.
  [[nodiscard]] const ComparisonBlock& comparisonBlock();
  void setComparisonBlock(ComparisonBlock block) { comparisonBlock_ = std::move(block); }

  /// Called for each old item that the search found to match any new item, with the last match
  /// found. This includes moved items, and may include items that are also reported as removed.
  [[nodiscard]] const ItemsMatchedBlock& itemsMatchedBlock() const noexcept {
    return itemsMatchedBlock_;
  }
  void setItemsMatchedBlock(ItemsMatchedBlock block) { itemsMatchedBlock_ = std::move(block); }

  /// Called for the old items that are neither kept nor moved, from the last to the first.
  [[nodiscard]] const ItemBlock& itemRemovedBlock() const noexcept { return itemRemovedBlock_; }
  void setItemRemovedBlock(ItemBlock block) { itemRemovedBlock_ = std::move(block); }

  /// Called for the new items that are neither kept nor moved, from the first to the last.
  [[nodiscard]] const ItemBlock& itemAddedBlock() const noexcept { return itemAddedBlock_; }
  void setItemAddedBlock(ItemBlock block) { itemAddedBlock_ = std::move(block); }

 private:
  IndexedComparisonBlock indexedComparisonBlock_;
  ComparisonBlock comparisonBlock_;
  ItemsMatchedBlock itemsMatchedBlock_;
  ItemBlock itemRemovedBlock_;
  ItemBlock itemAddedBlock_;
};

/// Calls the handler's blocks for all matches, then for all removed items, then for all added
/// items. Exceptions of the blocks propagate. Does not change the arrays.
/// @param newArray  null means an empty array
TQ_EXPORT void crossReferenceAgainst(const Array& oldArray, const Array* newArray,
                                     TQArrayCrossReferenceHandler& withHandler);

/// The same. Either array may be null, which means an empty array.
TQ_EXPORT void crossReference(const Array* oldArray, const Array* against,
                              TQArrayCrossReferenceHandler& withHandler);

}  // namespace tq
