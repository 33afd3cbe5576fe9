#include <TQFoundation/concurrency/work/Debouncer.h>

#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/concurrency/work/TimerBlock.h>

namespace tq {

Ref<Debouncer> Debouncer::init(double interval, Action actionToPerform) {
  TQ_ASSERT(actionToPerform != nullptr);
  return Ref<Debouncer>::adopt(new Debouncer(interval, std::move(actionToPerform)));
}

Debouncer::Debouncer(double interval, Action actionToPerform)
    : interval_(interval), actionToPerform_(std::move(actionToPerform)) {}

void Debouncer::schedulePerformAction() {
  if (const Ref<Timer> pending = timer_.lock()) pending->invalidate();
  timer_ = scheduledTimerWithTimeInterval(
      interval_, false, [self = share(*this)](Timer&) { self->actionToPerform_(); });
}

}  // namespace tq
