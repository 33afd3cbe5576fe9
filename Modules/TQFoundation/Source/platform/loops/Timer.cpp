#include <TQFoundation/platform/loops/Timer.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <TQFoundation/base/TQAssert.h>

namespace tq {
namespace {

std::int64_t nanosecondsOf(double seconds) {
  TQ_ASSERT(!std::isnan(seconds));
  constexpr double kLongest = 4e18;  // more than a century, and now + interval does not overflow
  if (seconds <= 0) seconds = 0.0001;
  return static_cast<std::int64_t>(std::clamp(std::round(seconds * 1e9), 1.0, kLongest));
}

}  // namespace

Timer::~Timer() = default;

Ref<Timer> Timer::scheduledTimerWithTimeInterval(double seconds, Action action,
                                                 Ref<Object> userInfo, bool repeats) {
  TQ_ASSERT(action != nullptr);
  auto timer =
      Ref<Timer>::adopt(new Timer(nanosecondsOf(seconds), action, std::move(userInfo), repeats));
  timer->loop_->scheduleTimer(*timer);
  return timer;
}

Timer::Timer(std::int64_t nanoseconds, Action action, Ref<Object> userInfo, bool repeats)
    : loop_(share(RunLoop::current())),
      action_(action),
      interval_(nanoseconds),
      start_(RunLoop::now()),
      repeats_(repeats),
      userInfo_(std::move(userInfo)) {}

void Timer::invalidate() {
  const Ref<Timer> self = share(*this);
  if (!isValid_.exchange(false)) return;
  if (loop_->isCurrent()) {
    letGo();
  } else {
    loop_->performBlock([self] { self->letGo(); });
    loop_->wakeUp();
  }
}

// A timer that is firing is not in the loop's heap, so a loop that its action runs does not fire
// it.
void Timer::fire() noexcept {
  if (isValid()) action_(*this);
  if (!isValid()) return letGo();  // also if another thread has just requested this from the loop
  if (repeats_) {
    loop_->scheduleTimer(*this);
  } else if (isValid_.exchange(false)) {
    letGo();
  }
}

/// Called when the loop's thread ends, also if another thread has just invalidated the timer and
/// the loop will not perform its block.
void Timer::end() noexcept {
  isValid_ = false;
  letGo();
}

void Timer::letGo() noexcept {
  const Ref<Object> userInfo = std::exchange(userInfo_, nullptr);  // its destructor may call back
  loop_->forgetTimer(*this);
}

std::int64_t Timer::nextDue(std::int64_t now) const noexcept {
  return start_ + ((now - start_) / interval_ + 1) * interval_;
}

}  // namespace tq
