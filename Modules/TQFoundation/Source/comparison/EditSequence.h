#pragma once

/// @file EditSequence.h
/// Edit sequences: the difference of two arrays, and how to apply and revert it.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq {

/// Returns the shortest list of removals and insertions that turns `oldArray` into `newArray`, or
/// nullopt if they are the same. The changes are applied in the order of the list, each at its
/// index. Does not change the arrays.
///
/// @param inferringMoves  true links removals and insertions that are moves, see
///                        TQArrayComparison::inferMoves()
/// @param withBlock       see TQArrayComparator; a lambda or function object is called directly
///
/// For costs and failures see TQArrayComparison.
template <class Comparator>
[[nodiscard]] std::optional<TQArrayChanges> editSequenceTo(const Array& oldArray,
                                                           const Array& newArray,
                                                           bool inferringMoves,
                                                           Comparator&& withBlock) {
  // Most nodes of a tree have no children: holding empty arrays costs as much as comparing a node.
  if (oldArray.count() == 0 && newArray.count() == 0) return std::nullopt;
  const auto heldOld = share(oldArray), heldNew = share(newArray);  // the block may release them
  const std::span<const Ref<Object>> olds = oldArray.objects();
  const std::span<const Ref<Object>> news = newArray.objects();
  const std::size_t same = FurthestXOnDiagonal(olds, news, 0, 0, withBlock);
  if (same == olds.size() && same == news.size()) return std::nullopt;

  TQArrayComparison comparison(oldArray, newArray, same, std::ref(withBlock));
  if (inferringMoves) comparison.inferMoves();
  return comparison.changes();
}

/// The same with isEqual() as the comparator.
[[nodiscard]] inline std::optional<TQArrayChanges> editSequenceTo(const Array& oldArray,
                                                                  const Array& newArray,
                                                                  bool inferringMoves) {
  return editSequenceTo(
      oldArray, newArray, inferringMoves,
      [](const Object& a, std::size_t, const Object& b, std::size_t) { return a.isEqual(b); });
}

/// Applies an edit sequence: turns the old array into the new one, or reverts that. Reverting what
/// was applied restores the old array, object by object. (An element that was removed because it
/// was equal to the object of its change is restored as that object.)
///
/// Every insertion inserts its own object, also that of a move. Elements that are not named in the
/// changes stay; if the comparator calls different objects the same, they are those of the array.
///
/// @param array    the old array; for revertEditSequence() the new one. Elements to be removed must
///                 be the objects of the changes or equal to them.
/// @param changes  in the order of editSequenceTo()
/// @throws Exception (InvalidArgumentException) if the changes do not fit the array, are in another
///         order, or isEqual() changes the array; std::bad_alloc; what isEqual() throws. Then the
///         array is unchanged by this call.
///
/// Cost: O(N + D) for N elements and D changes.
TQ_EXPORT void applyEditSequence(MutableArray& array,
                                 std::span<const Ref<TQComparisonArrayChange>> changes);
TQ_EXPORT void revertEditSequence(MutableArray& array,
                                  std::span<const Ref<TQComparisonArrayChange>> changes);

}  // namespace tq
