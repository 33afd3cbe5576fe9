#include <TQFoundation/concurrency/work/Debouncer.h>

#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/concurrency/work/TimerBlock.h>

namespace tq {

Debouncer::~Debouncer() = default;

Ref<Debouncer> Debouncer::init(double interval, Action actionToPerform) {
  TQ_ASSERT(actionToPerform != nullptr);
  return Ref<Debouncer>::adopt(new Debouncer(interval, std::move(actionToPerform)));
}

Debouncer::Debouncer(double interval, Action actionToPerform)
    : interval_(interval), actionToPerform_(std::move(actionToPerform)) {}

void Debouncer::schedulePerformAction() {
  const auto self = share(*this);  // the pending timer may hold the last reference
  const auto next = scheduledTimerWithTimeInterval(interval_, false,
                                                   [self](Timer&) { self->actionToPerform_(); });
  const Ref<Timer> pending = timer_.lock();
  timer_ = next;  // nothing can fail from here on: the earlier request is replaced, never lost
  if (pending != nullptr) pending->invalidate();
}

}  // namespace tq
