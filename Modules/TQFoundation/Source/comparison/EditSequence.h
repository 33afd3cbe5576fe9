#pragma once

/// @file EditSequence.h
/// The difference of two arrays.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>

#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq {

/// The shortest list of removals and insertions that makes `oldArray` into `newArray`, or none when
/// they are the same. Applied in its order, each at its own index, it yields the new array.
///
/// @param inferringMoves  links the halves of what was moved, see TQArrayComparison::inferMoves()
/// @param withBlock       see TQArrayComparator; a lambda or a function object is called directly
///
/// For costs and failures see TQArrayComparison. Both arrays are left as they are.
template <class Comparator>
[[nodiscard]] std::optional<TQArrayChanges> editSequenceTo(const Array& oldArray,
                                                           const Array& newArray,
                                                           bool inferringMoves,
                                                           Comparator&& withBlock) {
  const std::span<const Ref<Object>> olds = oldArray.objects();
  const std::span<const Ref<Object>> news = newArray.objects();
  const std::size_t same = FurthestXOnDiagonal(olds, news, 0, 0, withBlock);
  if (same == olds.size() && same == news.size()) return std::nullopt;

  TQArrayComparison comparison(oldArray, newArray, same, std::ref(withBlock));
  if (inferringMoves) comparison.inferMoves();
  return comparison.changes();
}

/// The same for elements that are the same when they are equal.
[[nodiscard]] inline std::optional<TQArrayChanges> editSequenceTo(const Array& oldArray,
                                                                  const Array& newArray,
                                                                  bool inferringMoves) {
  return editSequenceTo(
      oldArray, newArray, inferringMoves,
      [](const Object& a, std::size_t, const Object& b, std::size_t) { return a.isEqual(b); });
}

}  // namespace tq
