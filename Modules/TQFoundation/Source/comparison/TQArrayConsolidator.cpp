#include <TQFoundation/comparison/TQArrayConsolidator.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/comparison/detail/MatchedPairs.h>

namespace tq {
namespace {

void remove(MutableArray& array, const TQComparisonArrayChange& removal,
            const TQArrayConsolidator& blocks) {
  array.removeObjectAtIndex(removal.index());
  if (!removal.isMove() && blocks.postRemoveBlock()) {
    blocks.postRemoveBlock()(*removal.object());
  }
}

void insert(MutableArray& array, const TQComparisonArrayChange& insertion,
            const TQArrayConsolidator& blocks) {
  Ref<Object> object;
  if (const Ref<TQComparisonArrayChange> removal = insertion.associatedChange()) {
    object = Ref<Object>(removal->object());
  } else if (blocks.createBlock()) {
    object = blocks.createBlock()(*insertion.object());
  }
  if (!object) return;
  array.insertObject(std::move(object), std::min<std::uint64_t>(insertion.index(), array.count()));
}

}  // namespace

const TQArrayConsolidator::ComparisonBlock& TQArrayConsolidator::comparisonBlock() {
  if (!comparisonBlock_) {
    comparisonBlock_ = [](const Object& oldItem, std::size_t, const Object& newItem, std::size_t) {
      return &oldItem == &newItem;
    };
  }
  return comparisonBlock_;
}

bool consolidateAgainst(MutableArray& array, const Array& newArray,
                        TQArrayConsolidator& withConsolidator) {
  const auto held = share(array);  // a block may release it
  // A copy, because a block may replace itself, or destroy the consolidator.
  TQArrayConsolidator blocks = withConsolidator;
  const bool updates = static_cast<bool>(blocks.updateBlock());
  detail::MatchedPairs matched;
  const auto changes =
      editSequenceTo(array, newArray, true, matched.recording(blocks.comparisonBlock(), updates));
  for (const auto& [oldItem, newItem] : matched) blocks.updateBlock()(*oldItem, *newItem);
  if (!changes) return false;

  array.reserve(array.count() + changes->size());
  for (const Ref<TQComparisonArrayChange>& change : *changes) {
    if (change->isRemoval()) {
      remove(array, *change, blocks);
    } else {
      insert(array, *change, blocks);
    }
  }
  return !changes->empty();
}

Ref<Array> arrayByConsolidatingAgainst(Array& array, const Array& newArray,
                                       TQArrayConsolidator& withConsolidator, bool* hasChanges) {
  Ref<Array> unchanged = share(array);  // a block may release it
  Ref<MutableArray> copy = MutableArray::arrayWithArray(array);
  const bool changed = consolidateAgainst(*copy, newArray, withConsolidator);
  if (hasChanges != nullptr) *hasChanges = changed;
  return changed ? copy : unchanged;
}

}  // namespace tq
