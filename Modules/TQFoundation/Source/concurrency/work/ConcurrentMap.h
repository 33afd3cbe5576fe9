#pragma once

/// @file ConcurrentMap.h
/// Parallel maps and counts over arrays.
///
/// Blocks must be safe to run in parallel. Blocks of maps must not wait for each other. Each block
/// is called once for each element, in any order; the results are in the order of the elements. An
/// empty block throws Exception (InvalidArgumentException) before any element is visited.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Bits that select how an array is enumerated.
using EnumerationOptions = std::uint64_t;
/// The block is called on several threads concurrently.
inline constexpr EnumerationOptions EnumerationConcurrent = 1;

/// Returns the results of the block. It runs on the worker pool and on the calling thread, which
/// waits for the end.
///
/// @param compact  true leaves out results that are null or the Null object
/// @throws the first exception that leaves the block; no further calls are begun then
/// @throws Exception (InvalidArgumentException) if the block returns null and `compact` is false
[[nodiscard]] TQ_EXPORT Ref<Array> concurrentMapWithCompact(const Array& array, bool compact,
                                                            const ArrayMapBlock& block);
/// Returns concurrentMapWithCompact(array, false, block).
[[nodiscard]] TQ_EXPORT Ref<Array> concurrentMap(const Array& array, const ArrayMapBlock& block);
/// Returns concurrentMapWithCompact(array, true, block).
[[nodiscard]] TQ_EXPORT Ref<Array> compactConcurrentMap(const Array& array,
                                                        const ArrayMapBlock& block);

/// Call the concurrent form above if the options contain EnumerationConcurrent. Otherwise call
/// Array::map() or Array::compactMap(), which visit the elements one after the other.
[[nodiscard]] TQ_EXPORT Ref<Array> mapWithOptions(const Array& array, EnumerationOptions options,
                                                  const ArrayMapBlock& usingBlock);
[[nodiscard]] TQ_EXPORT Ref<Array> compactMapWithOptions(const Array& array,
                                                         EnumerationOptions options,
                                                         const ArrayMapBlock& usingBlock);

/// Returns the number of elements for which the block returns true. Unlike the blocks of maps,
/// these blocks may wait for each other; they are begun in the order of the elements, and the
/// caller waits for the end, see groupApply(). Throws the first exception that leaves the block.
[[nodiscard]] TQ_EXPORT std::size_t applyBlockConcurrentlyAndCountSuccess(
    const Array& array, const ArrayPredicate& block);

}  // namespace tq
