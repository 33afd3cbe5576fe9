#include <TQFoundation/concurrency/locks/TQLazyVar.h>

#include <chrono>

namespace tq {

TQLazyVar* TQLazyVarCreate() { return new TQLazyVar; }

void TQLazyVarFree(TQLazyVar* var) noexcept { delete var; }

namespace detail {

// Both hold the mutex. Otherwise a waiting thread could check the value, miss the notification, and
// then sleep forever.
void lazyVarFinish(TQLazyVar& var, void* result) noexcept {
  const std::scoped_lock guard(var.mutex);
  var.value.exchange(result, std::memory_order_acq_rel);
  var.condition.notify_all();
}

void* lazyVarWait(TQLazyVar& var, int timeoutSeconds) {
  void* value = &var;
  const auto isDone = [&] { return (value = TQLazyVarGetValue(&var)) != &var; };
  std::unique_lock guard(var.mutex);
  if (timeoutSeconds <= 0) {
    var.condition.wait(guard, isDone);
    return value;
  }
  const auto deadline = std::chrono::system_clock::now() + std::chrono::seconds(timeoutSeconds);
  return var.condition.wait_until(guard, deadline, isDone) ? value : nullptr;
}

}  // namespace detail
}  // namespace tq
