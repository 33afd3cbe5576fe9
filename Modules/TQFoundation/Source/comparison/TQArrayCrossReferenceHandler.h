#pragma once

/// @file TQArrayCrossReferenceHandler.h
/// Told what two arrays have in common and what only one of them has.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq {

/// How arrays are cross-referenced. Threads: one at a time.
class TQ_EXPORT TQArrayCrossReferenceHandler {
 public:
  /// Whether an old and a new item, told with their indices, match.
  using IndexedComparisonBlock = TQArrayComparator;
  /// Whether an old and a new item match.
  using ComparisonBlock = std::function<bool(Object& oldItem, Object& newItem)>;
  /// See itemsMatchedBlock().
  using ItemsMatchedBlock = std::function<void(Object& oldItem, Object& newItem)>;
  /// See itemRemovedBlock() and itemAddedBlock().
  using ItemBlock = std::function<void(Object& item)>;

  /// Which items match. Goes before comparisonBlock() when it is set.
  [[nodiscard]] const IndexedComparisonBlock& indexedComparisonBlock() const noexcept {
    return indexedComparisonBlock_;
  }
  void setIndexedComparisonBlock(IndexedComparisonBlock block) {
    indexedComparisonBlock_ = std::move(block);
  }

  /// Which items match; by default those that are equal.
  [[nodiscard]] const ComparisonBlock& comparisonBlock();
  void setComparisonBlock(ComparisonBlock block) { comparisonBlock_ = std::move(block); }

  /// Told of each old item that was ever found to match, with its last match. Moved items are among
  /// them, and so may be some that are told as removed too.
  [[nodiscard]] const ItemsMatchedBlock& itemsMatchedBlock() const noexcept {
    return itemsMatchedBlock_;
  }
  void setItemsMatchedBlock(ItemsMatchedBlock block) { itemsMatchedBlock_ = std::move(block); }

  /// Told of the old items that are neither kept nor moved, from the last to the first.
  [[nodiscard]] const ItemBlock& itemRemovedBlock() const noexcept { return itemRemovedBlock_; }
  void setItemRemovedBlock(ItemBlock block) { itemRemovedBlock_ = std::move(block); }

  /// Told of the new items that are neither kept nor moved, from the first to the last.
  [[nodiscard]] const ItemBlock& itemAddedBlock() const noexcept { return itemAddedBlock_; }
  void setItemAddedBlock(ItemBlock block) { itemAddedBlock_ = std::move(block); }

 private:
  IndexedComparisonBlock indexedComparisonBlock_;
  ComparisonBlock comparisonBlock_;
  ItemsMatchedBlock itemsMatchedBlock_;
  ItemBlock itemRemovedBlock_;
  ItemBlock itemAddedBlock_;
};

/// Tells the handler's blocks first all matches, then what was removed, then what was added. What a
/// block throws passes through; nothing was changed.
/// @param newArray  none counts as empty
TQ_EXPORT void crossReferenceAgainst(const Array& oldArray, const Array* newArray,
                                     TQArrayCrossReferenceHandler& withHandler);

/// The same; either array may be none.
TQ_EXPORT void crossReference(const Array* oldArray, const Array* against,
                              TQArrayCrossReferenceHandler& withHandler);

}  // namespace tq
