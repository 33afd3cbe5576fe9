#include <TQFoundation/comparison/TQArrayCrossReferenceHandler.h>

#include <cstddef>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/comparison/detail/MatchedPairs.h>

namespace tq {

const TQArrayCrossReferenceHandler::ComparisonBlock&
TQArrayCrossReferenceHandler::comparisonBlock() {
  if (!comparisonBlock_) {
    comparisonBlock_ = [](const Object& oldItem, const Object& newItem) {
      return oldItem.isEqual(newItem);
    };
  }
  return comparisonBlock_;
}

void crossReferenceAgainst(const Array& oldArray, const Array* newArray,
                           TQArrayCrossReferenceHandler& withHandler) {
  if (newArray == nullptr)
    return crossReferenceAgainst(oldArray, Array::array().get(), withHandler);
  // A copy, because a block may replace itself, or destroy the handler.
  TQArrayCrossReferenceHandler blocks = withHandler;
  if (!blocks.indexedComparisonBlock()) {
    blocks.setIndexedComparisonBlock(
        [&same = blocks.comparisonBlock()](Object& oldItem, std::size_t, Object& newItem,
                                           std::size_t) { return same(oldItem, newItem); });
  }
  const auto& matchedBlock = blocks.itemsMatchedBlock();
  detail::MatchedPairs matched;
  const auto changes = editSequenceTo(
      oldArray, *newArray, true,
      matched.recording(blocks.indexedComparisonBlock(), static_cast<bool>(matchedBlock)));
  for (const auto& [oldItem, newItem] : matched) matchedBlock(*oldItem, *newItem);
  if (!changes) return;
  for (const Ref<TQComparisonArrayChange>& change : *changes) {
    if (change->isMove()) continue;
    const auto& block = change->isRemoval() ? blocks.itemRemovedBlock() : blocks.itemAddedBlock();
    if (block) block(*change->object());
  }
}

void crossReference(const Array* oldArray, const Array* against,
                    TQArrayCrossReferenceHandler& withHandler) {
  const Ref<Array> empty = Array::array();
  crossReferenceAgainst(oldArray != nullptr ? *oldArray : *empty, against, withHandler);
}

}  // namespace tq
