#include <algorithm>
#include <new>
#include <thread>
#include <utility>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/detail/OperationScheduler.h>
#include <TQFoundation/platform/operations/detail/PoolThreads.h>

namespace tq::detail {
namespace {

constexpr int kMostLevels = 16;

/// The innermost runner on this thread.
struct Level {
  const Operation* started = nullptr;  // by this runner
  int depth = 0;                       // runners on the stack
  int heldBack = 0;                    // HeldBacks on the stack above this runner
};
thread_local constinit Level level;
thread_local constinit OperationScheduler* firstOwed = nullptr;  // retained
thread_local constinit OperationScheduler* lastOwed = nullptr;

bool mayRunHere() noexcept { return level.heldBack == 0 && level.depth < kMostLevels; }

}  // namespace

OperationScheduler::HeldBack::HeldBack() noexcept { ++level.heldBack; }
OperationScheduler::HeldBack::~HeldBack() { --level.heldBack; }

bool OperationScheduler::owesRuns() noexcept { return firstOwed != nullptr; }

void OperationScheduler::payDebts() noexcept {
  if (mayRunHere()) payAllDebts();
}

void OperationScheduler::payAllDebts() noexcept {
  while (firstOwed != nullptr) {
    const auto creditor = Ref<OperationScheduler>::adopt(firstOwed);
    firstOwed = std::exchange(creditor->nextOwed_, nullptr);
    if (firstOwed == nullptr) lastOwed = nullptr;
    {
      const Locked guard(creditor->lock_);
      creditor->isOwed_ = false;
    }
    creditor->run();
  }
}

void OperationScheduler::owe() noexcept {
  if (isOwed_) return;
  isOwed_ = true;
  ++seekingCount_;
  retain();
  (lastOwed != nullptr ? lastOwed->nextOwed_ : firstOwed) = this;
  lastOwed = this;
}

// Debts from a level that must not pay are paid here, one level below.
void OperationScheduler::runHere() noexcept {
  run();
  payDebts();
}

std::size_t OperationScheduler::defaultLimit() noexcept {
  return std::max<std::size_t>(4, std::size_t{2} * std::thread::hardware_concurrency());
}

bool OperationScheduler::isRunning(const Operation& operation) noexcept {
  return level.started == &operation;
}

void OperationScheduler::add(Operation& operation) {
  const auto self = share(*this);
  OperationScheduler* none = nullptr;
  if (operation.isExecuting() || operation.isFinished() ||
      !operation.scheduler_.compare_exchange_strong(none, this)) {
    throw Exception(InvalidArgumentException,
                    "addOperation: the operation runs, has finished or was added before");
  }
  retain();  // the operation holds this until it is destroyed
  operation.retain();
  {
    const Locked guard(lock_);
    if (operation.place_ == Operation::Place::gone) {  // started by another thread meanwhile
      operation.release();
      return;
    }
    operation.place_ = Operation::Place::held;
    operation.previous_ = last_;
    (last_ != nullptr ? last_->next_ : first_) = &operation;
    last_ = &operation;
    ++count_;
  }
  bool hasFinished;  // finished on another thread, before it had this queue
  {
    const Locked guard(operation.lock_);
    hasFinished = operation.hasNoticedFinish_;
  }
  if (hasFinished) return finished(operation);
  if (operation.isReady()) becameReady(operation);
}

// The callers of this function and the next one hold the operation, and the operation holds this.
void OperationScheduler::becameReady(Operation& operation) {
  const int urgency = std::clamp(static_cast<int>(operation.queuePriority()), -8, 8);
  ReadyList& list = ready_[static_cast<std::size_t>((8 - urgency) / 4)];
  bool runsHere = false;
  {
    const Locked guard(lock_);
    if (operation.place_ != Operation::Place::held) return;
    operation.place_ = Operation::Place::ready;
    (list.last != nullptr ? list.last->nextReady_ : list.first) = &operation;
    list.last = &operation;
    ++readyCount_;
    runsHere = callRunners();
  }
  if (runsHere) runHere();
}

void OperationScheduler::finished(Operation& operation) {
  // The runner that started it takes the next operation when start() returns, which may be long
  // after an asynchronous operation has finished.
  const bool mayStillRun = !isRunning(operation) || operation.isAsynchronous();
  bool runsHere = false;
  {
    const Locked guard(lock_);
    const auto place = std::exchange(operation.place_, Operation::Place::gone);
    // add() handles an operation without a place. One that finishes meanwhile may get here twice.
    if (place == Operation::Place::none || place == Operation::Place::gone) return;
    unlink(operation);
    if (count_ == 0) emptied_.notify_all();
    if (place == Operation::Place::ready) return;  // a runner will find and release it
    if (place == Operation::Place::started) --startedCount_;
    if (mayStillRun) runsHere = callRunners();
  }
  operation.release();
  if (runsHere) runHere();
}

void OperationScheduler::replaceRunner() {
  change([] {});
}

void OperationScheduler::unlink(Operation& operation) {
  (operation.previous_ != nullptr ? operation.previous_->next_ : first_) = operation.next_;
  (operation.next_ != nullptr ? operation.next_->previous_ : last_) = operation.previous_;
  if (nextAbandoned_ == &operation) nextAbandoned_ = operation.next_;
  --count_;
}

Operation* OperationScheduler::takeReady() {
  for (ReadyList& list : ready_) {
    if (list.first == nullptr) continue;
    Operation* const taken = list.first;
    list.first = std::exchange(taken->nextReady_, nullptr);
    if (list.first == nullptr) list.last = nullptr;
    --readyCount_;
    return taken;
  }
  return nullptr;
}

bool OperationScheduler::startRunner() noexcept {
  try {
    std::function<void()> runner = [self = share(*this)] { self->run(); };
    return runOnPoolThread(runner);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool OperationScheduler::callRunners() noexcept {
  while (!isSuspended_ && seekingCount_ < readyCount_ && startedCount_ + seekingCount_ < limit_) {
    if (!startRunner()) {
      if (mayRunHere()) {
        ++seekingCount_;
        return true;
      }
      owe();
      return false;
    }
    ++seekingCount_;
  }
  return false;
}

void OperationScheduler::run() noexcept {
  const Level outer = std::exchange(level, Level{nullptr, level.depth + 1, 0});
  for (bool isSeeking = true;;) {
    Ref<Operation> operation;  // released without the lock
    {
      const Locked guard(lock_);
      if (!isSeeking) ++seekingCount_;
      Operation* const taken = isSuspended_ || startedCount_ >= limit_ ? nullptr : takeReady();
      if (taken == nullptr) {
        --seekingCount_;
        level = outer;
        return;
      }
      isSeeking = taken->place_ == Operation::Place::gone;
      if (isSeeking) {
        operation = Ref<Operation>::adopt(taken);
      } else {
        operation = share(*taken);
        --seekingCount_;
        taken->place_ = Operation::Place::started;
        ++startedCount_;
      }
    }
    if (isSeeking) continue;
    level.started = operation.get();
    operation->start();
    level.started = nullptr;
  }
}

void OperationScheduler::setMaximum(std::ptrdiff_t maximum) {
  change([&]() TQ_REQUIRES(lock_) {
    maximum_ = maximum;
    limit_ = maximum < 0 ? defaultLimit() : static_cast<std::size_t>(maximum);
  });
}

std::ptrdiff_t OperationScheduler::maximum() const {
  const Locked guard(lock_);
  return maximum_;
}

void OperationScheduler::setSuspended(bool isSuspended) {
  change([&]() TQ_REQUIRES(lock_) { isSuspended_ = isSuspended; });
}

template <class Change>
void OperationScheduler::change(const Change& change) {
  const auto self = share(*this);
  bool runsHere = false;
  {
    const Locked guard(lock_);
    change();
    runsHere = callRunners();
  }
  if (runsHere) runHere();
}

bool OperationScheduler::isSuspended() const {
  const Locked guard(lock_);
  return isSuspended_;
}

std::vector<Ref<Operation>> OperationScheduler::operations() const {
  std::vector<Ref<Operation>> all;
  const Locked guard(lock_);
  all.reserve(count_);
  for (Operation* each = first_; each != nullptr; each = each->next_) all.push_back(share(*each));
  return all;
}

std::size_t OperationScheduler::count() const {
  const Locked guard(lock_);
  return count_;
}

void OperationScheduler::waitUntilEmpty() {
  const auto self = share(*this);  // the last operation may release the queue
  payAllDebts();
  const Locked guard(lock_);
  while (count_ != 0) emptied_.wait(lock_);
}

// Called by a destructor, so it must not fail: it needs no list of the operations.
void OperationScheduler::abandon() {
  {
    const Locked guard(lock_);
    if (!isSuspended_ && limit_ != 0) return;
    nextAbandoned_ = first_;
  }
  for (;;) {
    Ref<Operation> each;  // cancelled and released without the lock
    {
      const Locked guard(lock_);
      if (nextAbandoned_ == nullptr) break;
      each = share(*nextAbandoned_);
      nextAbandoned_ = each->next_;
    }
    each->cancel();
  }
  change([&]() TQ_REQUIRES(lock_) {
    isSuspended_ = false;
    if (limit_ == 0) limit_ = defaultLimit();
  });
}

}  // namespace tq::detail
