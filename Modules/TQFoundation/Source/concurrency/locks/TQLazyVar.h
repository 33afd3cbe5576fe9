#pragma once

/// @file TQLazyVar.h
/// A pointer computed when it is first asked for, by one thread while the others wait.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// One lazily computed pointer. What it points at is nobody's but the caller's.
///
/// | value | means |
/// |---|---|
/// | null | not computed |
/// | the record's own address | being computed |
/// | anything else | the result, for good |
struct TQ_EXPORT TQLazyVar {
  std::atomic<void*> value{nullptr};  ///< what was calculated; null until then
  std::mutex mutex;                   ///< guards the calculation's end, and the waiting for it
  std::condition_variable condition;  ///< told when a calculation ends
};

/// A new record, to be released by TQLazyVarFree().
/// @throws std::bad_alloc
[[nodiscard]] TQ_EXPORT TQLazyVar* TQLazyVarCreate();

/// Releases the record, which nobody uses any more; null is ignored.
TQ_EXPORT void TQLazyVarFree(TQLazyVar* var) noexcept;

/// The word as it is, without waiting: null, the record's address, or the result. Any thread.
[[nodiscard]] inline void* TQLazyVarGetValue(const TQLazyVar* var) noexcept {
  return var->value.load(std::memory_order_acquire);
}

namespace detail {
/// Stores what was computed and wakes all who wait.
TQ_EXPORT void lazyVarFinish(TQLazyVar& var, void* result) noexcept;
TQ_EXPORT void* lazyVarWait(TQLazyVar& var, int timeoutSeconds);
}  // namespace detail

/// The result, computed by `calculationBlock` if nobody has begun to. The block runs with no lock
/// held, on one thread at a time; the others wait. A block that answers null, or throws, leaves the
/// variable not computed: who waited gets null, and the next call computes again. A block that asks
/// for its own variable waits for itself.
///
/// @param timeout  whole seconds to wait for another thread, by the real-time clock; 0 or less
///                 waits without limit. The computing thread itself is never interrupted.
/// @return the result; null on time-out
/// A null `var` or block stops the process. Any thread. Cost when computed: one acquire load.
template <class Block>
void* TQLazyVarGetOrCalculateValue(TQLazyVar* var, int timeout, Block&& calculationBlock) {
  if (var == nullptr) assertionFailed(__func__, __FILE__, __LINE__, "(var) != nil");
  if constexpr (requires { calculationBlock == nullptr; }) {
    if (calculationBlock == nullptr) {
      assertionFailed(__func__, __FILE__, __LINE__, "(calculationBlock) != nil");
    }
  }
  // Acquire, here and below: what the result points at was written before it was stored.
  void* value = var->value.load(std::memory_order_acquire);
  if (value == nullptr && var->value.compare_exchange_strong(value, var, std::memory_order_acquire,
                                                             std::memory_order_acquire)) {
    struct Finish {
      ~Finish() { detail::lazyVarFinish(var, result); }
      TQLazyVar& var;
      void* result;
    } finish{*var, nullptr};
    return finish.result = std::forward<Block>(calculationBlock)();
  }
  return value != var ? value : detail::lazyVarWait(*var, timeout);
}

}  // namespace tq
