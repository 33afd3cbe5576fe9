#include <TQFoundation/platform/threads/SerialQueue.h>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/ThreadSystem.h>
#include <TQFoundation/platform/threads/detail/FifoLock.h>

namespace tq {

struct SerialQueue::State {
  State() noexcept { detail::lockMade(this); }
  ~State() { detail::lockGone(this); }

  detail::FifoLock<detail::ThreadSystem> lock;
};

SerialQueue::SerialQueue(std::string label) : label_(std::move(label)), state_(new State) {}

SerialQueue::~SerialQueue() { delete state_; }

void SerialQueue::enter() noexcept {
  detail::willLock(state_);
  state_->lock.lock();
  detail::didLock(state_);
}

void SerialQueue::leave() noexcept {
  State* const state = state_;  // after unlock() another thread may destroy the queue
  detail::willUnlock(state);
  state->lock.unlock();
  detail::didUnlock(state);
}

}  // namespace tq
