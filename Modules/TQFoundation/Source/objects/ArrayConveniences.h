#pragma once

/// @file ArrayConveniences.h
/// Search, removal and reversal for arrays. Each function visits the elements once, in order, and
/// does not change its argument. Predicates and the elements' isEqual() run on the caller's thread.
/// They may change or release the array: what is visited are the elements at the start. Exceptions
/// propagate.
///
/// Map and filter are members of Array, because free functions with these names are ambiguous for
/// programs that also use the names of std without qualification.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Returns the first element for which the predicate is true, or null. Later elements are not
/// visited.
[[nodiscard]] TQ_EXPORT Ref<Object> firstObjectPassing(const Array& array,
                                                       const ArrayPredicate& predicate);

/// Returns the elements that are not the Null object.
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByRemovingNull(const Array& array);

/// Returns the elements that are not equal to `object`.
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByRemovingObject(const Array& array, const Object& object);

/// Returns the elements without later ones that are equal to an earlier one, by isEqual() and
/// hash().
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByRemovingDuplicates(const Array& array);

/// Returns the elements in reverse order.
[[nodiscard]] TQ_EXPORT Ref<Array> reversedArray(const Array& array);

/// Returns true if an element equals `object`.
[[nodiscard]] TQ_EXPORT bool containsObject(const Array& array, const Object& object);

}  // namespace tq
