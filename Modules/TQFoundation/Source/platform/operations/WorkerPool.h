#pragma once

/// @file WorkerPool.h
/// The process's pool of worker threads, about one a core, for work that computes. What blocks
/// belongs on an OperationQueue.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// What an iteration of a parallel loop is known to cost: the loop's own memory from call to call,
/// so that a loop too short to be worth sharing is not shared. Starts out knowing nothing. Any
/// thread.
struct ApplyCost {
  std::atomic<std::uint32_t> picoseconds{0};  ///< 0: not known
  std::atomic<std::uint32_t> unmeasured{0};   ///< loops since it was last measured
};

namespace detail {
using ApplyRange = void (*)(const void* body, std::size_t begin, std::size_t end);
TQ_EXPORT void parallelApply(std::size_t count, const void* body, ApplyRange range,
                             ApplyCost* cost);
}  // namespace detail

/// Calls `body(i)` once for every i in 0 ..< count, on the calling thread and on idle workers, in
/// any order, and returns when all calls have ended.
///
/// The caller takes part, so that it makes progress even where all workers are busy; calls may
/// nest. While it waits for others it does no work but this loop's own: a lock held around the call
/// is safe.
///
/// @param cost  kept by the caller for all loops with the same body: one that is expected to take
///              less than sharing it would runs on the caller alone, and is shared once it turns
///              out to take longer. Null: always shared
/// @throws the first exception that leaves the body, once the calls under way have ended; the
///         calls not yet begun are left out
template <class Body>
void parallelApply(std::size_t count, const Body& body, ApplyCost* cost = nullptr) {
  const auto range = [](const void* context, std::size_t begin, std::size_t end) {
    const Body& call = *static_cast<const Body*>(context);
    for (std::size_t i = begin; i < end; ++i) call(i);
  };
  detail::parallelApply(count, std::addressof(body), range, cost);
}

/// Calls `body(i)` once for every i in 0 ..< count on threads that may block, begun in that order,
/// while the caller waits; returns when all calls have ended. Calls may wait for each other: about
/// one a core is under way at first, and one more whenever none has ended for a while, up to 64.
///
/// @throws the first exception that leaves the body, once the calls under way have ended; the
///         calls not yet begun are left out
TQ_EXPORT void groupApply(std::size_t count, const std::function<void(std::size_t)>& body);

}  // namespace tq
