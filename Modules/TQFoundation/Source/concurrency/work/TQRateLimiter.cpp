#include <TQFoundation/concurrency/work/TQRateLimiter.h>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/loops/RunLoop.h>

namespace tq {

TQRateLimiter::~TQRateLimiter() = default;

TQRateLimiter::TQRateLimiter(Object* target, ActionInvocation invocation,
                             TQRateLimiterUpdateStrategy strategy)
    : target_(target), actionInvocation_(std::move(invocation)), updateStrategy_(strategy) {}

Ref<TQRateLimiter> TQRateLimiter::make(Object* target, ActionInvocation invocation,
                                       TQRateLimiterUpdateStrategy strategy) {
  return Ref<TQRateLimiter>::adopt(new TQRateLimiter(target, std::move(invocation), strategy));
}

void TQRateLimiter::requireMethod(bool hasMethod) {
  if (!hasMethod) {
    throw Exception(InvalidArgumentException, "TQRateLimiter: the target has no such method");
  }
}

// Two threads that arrive here at the same time schedule one block each. The second block finds
// nothing to do. The flag is set before the block can run, and cleared if scheduling fails.
void TQRateLimiter::schedule() {
  hasScheduledBlock_.store(true);
  const auto block = [self = share(*this)] { self->performUpdateIfNeeded(); };
  try {
    switch (updateStrategy()) {
      case TQRateLimiterUpdateOnMainQueue:
        return mainQueueAsync(block);
      case TQRateLimiterUpdateInRunLoop:
        return RunLoop::main().performBlock(block);
      default:
        return;  // intended: see TQRateLimiterUpdateStrategy
    }
  } catch (...) {
    hasScheduledBlock_.store(false);
    throw;
  }
}

void TQRateLimiter::performUpdateIfNeeded() {
  hasScheduledBlock_.store(false);
  updateIfNeeded();
}

void TQRateLimiter::updateIfNeeded() {
  if (atomicNeedsUpdate_.load()) update();
}

void TQRateLimiter::update() {
  const auto self = share(*this);  // the target may release it
  // Before the call, so that the target may request again. An exchange, so that the target sees
  // what a thread has written before the request that this clears.
  atomicNeedsUpdate_.exchange(false);
  const Ref<Object> target = target_.lock();
  const ActionInvocation invocation = actionInvocation();
  if (target != nullptr && invocation) invocation(*target, *this);
}

TQRateLimiter::ActionInvocation TQRateLimiter::actionInvocation() const {
  const Locked guard(lock_);
  return actionInvocation_;
}

void TQRateLimiter::setActionInvocation(ActionInvocation invocation) {
  const Locked guard(lock_);
  actionInvocation_.swap(invocation);  // the earlier one is destroyed after the lock is released
}

}  // namespace tq
