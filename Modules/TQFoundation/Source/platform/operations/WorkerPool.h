#pragma once

/// @file WorkerPool.h
/// Parallel loops, on the process's pool of worker threads or on threads that may block.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The measured cost of an iteration, which a loop keeps from call to call, so that it runs on the
/// caller alone if sharing it would take longer. Initially unknown. Any thread.
struct ApplyCost {
  std::atomic<std::uint32_t> picoseconds{0};  ///< 0 if unknown
  std::atomic<std::uint32_t> unmeasured{0};   ///< loops since the last measurement
};

namespace detail {
using ApplyRange = void (*)(const void* body, std::size_t begin, std::size_t end);
TQ_EXPORT void parallelApply(std::size_t count, const void* body, ApplyRange range,
                             ApplyCost* cost);
}  // namespace detail

/// Calls `body(i)` once for each i from 0 to count - 1, in any order, on the calling thread and on
/// idle workers. Returns when all calls have ended.
///
/// The pool has about one worker for each core, so the body should compute and not block; blocking
/// work belongs on an OperationQueue. The caller takes part, so the loop makes progress even if all
/// workers are busy; loops may nest. While the caller waits, it runs no work of other loops, so it
/// may hold a lock during the call.
///
/// @param cost  the cost of all loops with the same body, owned by the caller. A loop that is
///              expected to take less time than sharing it starts on the caller alone, and is
///              shared when it takes longer. Null: always shared.
/// @throws the first exception that leaves the body, after all running calls have ended; calls that
///         have not begun are skipped
template <class Body>
void parallelApply(std::size_t count, const Body& body, ApplyCost* cost = nullptr) {
  const auto range = [](const void* context, std::size_t begin, std::size_t end) {
    const Body& call = *static_cast<const Body*>(context);
    for (std::size_t i = begin; i < end; ++i) call(i);
  };
  detail::parallelApply(count, std::addressof(body), range, cost);
}

/// Calls `body(i)` once for each i from 0 to count - 1, started in this order, on threads that may
/// block. Returns when all calls have ended.
///
/// Calls may wait for each other: about one for each core runs at first, and one more is started
/// whenever no call has ended for a while, up to 64. If no thread can be created, the calls run one
/// after another on the calling thread, and must not wait for each other. If the calling thread is
/// cancelled while it waits (pthread_cancel), it ends after all calls have ended.
///
/// @throws the first exception that leaves the body, after all running calls have ended; calls that
///         have not begun are skipped
TQ_EXPORT void groupApply(std::size_t count, const std::function<void(std::size_t)>& body);

}  // namespace tq
