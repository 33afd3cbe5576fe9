#pragma once

/// @file TQLazyVar.h
/// A lazily computed pointer for any number of threads.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// A lazily computed pointer. The caller owns the object that it points to.
///
/// | value | meaning |
/// |---|---|
/// | null | not computed |
/// | the address of the record itself | being computed |
/// | any other | the result; it never changes again |
struct TQ_EXPORT TQLazyVar {
  std::atomic<void*> value{nullptr};  ///< the state, see the table
  std::mutex mutex;                   ///< held to end a calculation and to wait for its end
  std::condition_variable condition;  ///< notified when a calculation ends
};

/// Creates a record. Release it with TQLazyVarFree().
/// @throws std::bad_alloc
[[nodiscard]] TQ_EXPORT TQLazyVar* TQLazyVarCreate();

/// Releases a record that no thread uses any more. Null is ignored.
TQ_EXPORT void TQLazyVarFree(TQLazyVar* var) noexcept;

/// Returns the current state without waiting: null, the record's address, or the result.
/// Threads: any.
[[nodiscard]] inline void* TQLazyVarGetValue(const TQLazyVar* var) noexcept {
  return var->value.load(std::memory_order_acquire);
}

namespace detail {
/// Stores the result and wakes all waiting threads.
TQ_EXPORT void lazyVarFinish(TQLazyVar& var, void* result) noexcept;
TQ_EXPORT void* lazyVarWait(TQLazyVar& var, int timeoutSeconds);
}  // namespace detail

/// Returns the result. Calls `calculationBlock` if the result is not computed and no other thread
/// is computing it.
///
/// The block runs with no lock held, on one thread at a time; other threads wait for it. If it
/// returns null or throws, the variable stays not computed: a waiting thread gets null or, if
/// another thread computes again before it wakes, that result. The next call computes again. A
/// block that requests its own variable deadlocks.
///
/// @param timeout  whole seconds to wait for another thread, measured by the real-time clock. 0 or
///                 less waits without limit. The computing thread itself is never interrupted.
/// @return the result, or null after a time-out
/// A null `var` or block stops the process. Threads: any. Cost when computed: one acquire load.
template <class Block>
void* TQLazyVarGetOrCalculateValue(TQLazyVar* var, int timeout, Block&& calculationBlock) {
  if (var == nullptr) assertionFailed(__func__, __FILE__, __LINE__, "(var) != nil");
  if constexpr (requires { calculationBlock == nullptr; }) {
    if (calculationBlock == nullptr) {
      assertionFailed(__func__, __FILE__, __LINE__, "(calculationBlock) != nil");
    }
  }
  // Acquire, here and below: the object behind the result was written before the result was stored.
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
