#pragma once

/// @file ArrayConveniences.h
/// Map, filter, search and reverse for arrays. Each function visits the elements once, in order,
/// and does not change its argument. Blocks run on the caller's thread; their exceptions propagate.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Returns the replacement of an element.
using ArrayMapBlock = std::function<Ref<Object>(Object&)>;
/// Returns whether an element matches.
using ArrayPredicate = std::function<bool(Object&)>;

/// Returns the results of the block, one for each element.
/// @throws Exception (InvalidArgumentException) if the block returns null
[[nodiscard]] TQ_EXPORT Ref<Array> map(const Array& array, const ArrayMapBlock& block);

/// The same without results that are null or the Null object.
[[nodiscard]] TQ_EXPORT Ref<Array> compactMap(const Array& array, const ArrayMapBlock& block);

/// Returns the elements of all arrays that the block returns, in order; null counts as empty.
[[nodiscard]] TQ_EXPORT Ref<Array> flatMap(const Array& array,
                                           const std::function<Ref<Array>(Object&)>& block);

/// Returns the elements for which the predicate is true.
[[nodiscard]] TQ_EXPORT Ref<Array> filter(const Array& array, const ArrayPredicate& predicate);

/// Returns the first element for which the predicate is true, or null. The array owns it. Later
/// elements are not visited.
[[nodiscard]] TQ_EXPORT Object* firstObjectPassing(const Array& array,
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
