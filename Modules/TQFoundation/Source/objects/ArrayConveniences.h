#pragma once

/// @file ArrayConveniences.h
/// What is done to whole arrays. Each function goes over the elements once, in order, and leaves
/// its argument alone. Blocks run on the caller's thread; what they throw passes through.

#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Answers what takes an element's place.
using ArrayMapBlock = std::function<Ref<Object>(Object&)>;
/// Answers whether an element is meant.
using ArrayPredicate = std::function<bool(Object&)>;

/// The answers of the block, one for each element.
/// @throws Exception (InvalidArgumentException) when the block answers none
[[nodiscard]] TQ_EXPORT Ref<Array> map(const Array& array, const ArrayMapBlock& block);

/// The same without the answers that are none or the Null object.
[[nodiscard]] TQ_EXPORT Ref<Array> compactMap(const Array& array, const ArrayMapBlock& block);

/// The elements of the arrays that the block answers, one array after another; none adds nothing.
[[nodiscard]] TQ_EXPORT Ref<Array> flatMap(const Array& array,
                                           const std::function<Ref<Array>(Object&)>& block);

/// The elements for which the predicate holds.
[[nodiscard]] TQ_EXPORT Ref<Array> filter(const Array& array, const ArrayPredicate& predicate);

/// The first element for which the predicate holds, lent; null when there is none. Stops there.
[[nodiscard]] TQ_EXPORT Object* firstObjectPassing(const Array& array,
                                                   const ArrayPredicate& predicate);

/// The elements that are not the Null object.
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByRemovingNull(const Array& array);

/// The elements that are not equal to `object`.
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByRemovingObject(const Array& array, const Object& object);

/// Each element once, where it is first met, by equality and hash.
[[nodiscard]] TQ_EXPORT Ref<Array> arrayByRemovingDuplicates(const Array& array);

/// The elements from the last to the first.
[[nodiscard]] TQ_EXPORT Ref<Array> reversedArray(const Array& array);

/// True when the array holds an element equal to `object`.
[[nodiscard]] TQ_EXPORT bool containsObject(const Array& array, const Object& object);

}  // namespace tq
