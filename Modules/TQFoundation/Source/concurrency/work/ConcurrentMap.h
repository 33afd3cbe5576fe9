#pragma once

/// @file ConcurrentMap.h
/// What is done to all elements of an array at once, on many threads. Blocks must be safe to run in
/// parallel, and those of the maps must not wait for each other; they are called once for each
/// element, in any order, and answers keep the elements' order. An empty block throws Exception
/// (InvalidArgumentException) before anything is run.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/ArrayConveniences.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Bits that say how an array is gone over.
using EnumerationOptions = std::uint64_t;
/// The block is called on several threads at once.
inline constexpr EnumerationOptions EnumerationConcurrent = 1;

/// The answers of the block, called on the worker pool and the calling thread, which waits.
///
/// @param compact  leaves out the answers that are none or the Null object
/// @throws the first exception that leaves the block; elements not yet begun are left out then
/// @throws Exception (InvalidArgumentException) when the block answers none, unless compacting
[[nodiscard]] TQ_EXPORT Ref<Array> concurrentMapWithCompact(const Array& array, bool compact,
                                                            const ArrayMapBlock& block);
/// The answers of the block, none of which may be none, with exceptions as above.
[[nodiscard]] TQ_EXPORT Ref<Array> concurrentMap(const Array& array, const ArrayMapBlock& block);
/// The answers of the block that are neither none nor the Null object, with exceptions as above.
[[nodiscard]] TQ_EXPORT Ref<Array> compactConcurrentMap(const Array& array,
                                                        const ArrayMapBlock& block);

/// concurrentMap() when the options hold EnumerationConcurrent, else map(), one after the other.
[[nodiscard]] TQ_EXPORT Ref<Array> mapWithOptions(const Array& array, EnumerationOptions options,
                                                  const ArrayMapBlock& usingBlock);
[[nodiscard]] TQ_EXPORT Ref<Array> compactMapWithOptions(const Array& array,
                                                         EnumerationOptions options,
                                                         const ArrayMapBlock& usingBlock);

/// How many elements the block holds for; 0 for an empty array. Called on threads that may block,
/// begun in the elements' order, while the caller waits: see groupApply(). Exceptions as above.
[[nodiscard]] TQ_EXPORT std::size_t applyBlockConcurrentlyAndCountSuccess(
    const Array& array, const ArrayPredicate& block);

}  // namespace tq
