#include <TQFoundation/platform/operations/Operation.h>

#include <algorithm>
#include <utility>

#include <TQFoundation/base/MakeRoom.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/WorkerPool.h>
#include <TQFoundation/platform/operations/detail/OperationScheduler.h>
#include <TQFoundation/platform/operations/detail/PoolThreads.h>
#include <TQFoundation/platform/threads/Thread.h>

namespace tq {

Operation::Operation() = default;

Operation::~Operation() {
  if (detail::OperationScheduler* const scheduler = scheduler_) scheduler->release();
}

// In a destructor no reference is left, so null is returned; the caller of the destructor keeps the
// memory.
Ref<Operation> Operation::hold() noexcept {
  return referenceCount() != 0 ? share(*this) : Ref<Operation>();
}

void Operation::start() {
  const Ref<Operation> self = share(*this);
  if (phase_ == Phase::finished || isFinished()) return;
  if (!isReady()) throw Exception(InvalidArgumentException, "start: the operation is not ready");
  if (isExecuting() || hasStarted_.exchange(true)) {
    throw Exception(InvalidArgumentException, "start: the operation was started before");
  }
  if (isMarkedCancelled_ || isCancelled()) return finish();
  willChangeValueForKey(isExecutingKey);
  phase_ = Phase::executing;
  didChangeValueForKey(isExecutingKey);
  try {
    main();
  } catch (...) {
    // On a queue, the exception stops the process. Until then no thread may see the operation
    // finish.
    if (!isRunByQueue()) finish();
    throw;
  }
  finish();
}

void Operation::main() {}

bool Operation::isRunByQueue() const noexcept {
  return detail::OperationScheduler::isRunning(*this);
}

void Operation::finish() {
  const bool wasExecuting = phase_ == Phase::executing;
  if (wasExecuting) willChangeValueForKey(isExecutingKey);
  willChangeValueForKey(isFinishedKey);
  phase_ = Phase::finished;
  if (wasExecuting) didChangeValueForKey(isExecutingKey);
  didChangeValueForKey(isFinishedKey);
}

void Operation::cancel() {
  const Ref<Operation> self = hold();
  if (phase_ == Phase::finished || isMarkedCancelled_) return;
  willChangeValueForKey(isCancelledKey);
  const bool wasMarked = isMarkedCancelled_.exchange(true);
  didChangeValueForKey(isCancelledKey);
  if (!wasMarked && unfinishedDependencies_ > 0) noticeReady();
}

bool Operation::isReady() const { return unfinishedDependencies_ <= 0 || isMarkedCancelled_; }
bool Operation::isExecuting() const { return phase_ == Phase::executing; }
bool Operation::isFinished() const { return phase_ == Phase::finished; }
bool Operation::isCancelled() const { return isMarkedCancelled_; }
bool Operation::isAsynchronous() const { return false; }

// Both operations record an unfinished dependency, so the shorter list is searched.
void Operation::addDependency(Operation& operation) {
  if (isDependentOn(operation)) return;
  {
    const Locked guard(lock_);
    detail::makeRoom(dependencies_, 1);  // so that nothing fails halfway
  }
  {
    const Locked guard(operation.lock_);
    if (!operation.hasNoticedFinish_) {
      operation.dependents_.emplace_back(this);
      ++unfinishedDependencies_;
    }
  }
  const Locked guard(lock_);
  if (!hasNoticedFinish_) dependencies_.push_back(share(operation));
}

bool Operation::isDependentOn(Operation& operation) const {
  std::size_t count = 0;
  {
    const Locked guard(lock_);
    count = dependencies_.size();
  }
  {
    const Locked guard(operation.lock_);
    if (!operation.hasNoticedFinish_ && operation.dependents_.size() <= count) {
      return std::ranges::any_of(operation.dependents_, [this](const Weak<Operation>& each) {
        return each.observes(*this);
      });
    }
  }
  const Locked guard(lock_);
  return std::ranges::find(dependencies_, share(operation)) != dependencies_.end();
}

void Operation::removeDependency(Operation& operation) {
  const Ref<Operation> self = hold(), held = share(operation);
  {
    const Locked guard(lock_);
    if (std::erase(dependencies_, held) == 0) return;
  }
  std::size_t removed = 0;
  {
    const Locked guard(operation.lock_);
    removed = std::erase_if(operation.dependents_,
                            [this](const Weak<Operation>& each) { return each.observes(*this); });
  }
  if (removed != 0) dependencyFinished();
}

std::vector<Ref<Operation>> Operation::dependencies() const {
  const Locked guard(lock_);
  return dependencies_;
}

void Operation::dependencyFinished() {
  if (--unfinishedDependencies_ == 0) noticeReady();
}

void Operation::noticeReady() {
  const Ref<Operation> self = hold();
  willChangeValueForKey(isReadyKey);
  didChangeValueForKey(isReadyKey);
}

void Operation::setCompletionBlock(std::function<void()> block) {
  const Locked guard(lock_);
  completionBlock_.swap(block);  // the previous one is destroyed after the lock is released
}

void Operation::noticeFinished() {
  const Ref<Operation> self = hold();
  std::vector<Weak<Operation>> dependents;
  std::vector<Ref<Operation>> dependencies;
  std::function<void()> completion;
  {
    const Locked guard(lock_);
    if (std::exchange(hasNoticedFinish_, true)) return;
    dependents.swap(dependents_);
    dependencies.swap(dependencies_);
    completion.swap(completionBlock_);
  }
  bool completesHere = false;
  {
    // Dependents may wait for this operation, so they do not run here before its end is complete.
    const detail::OperationScheduler::HeldBack section;
    for (const Weak<Operation>& each : dependents) {
      if (const Ref<Operation> dependent = each.lock()) dependent->dependencyFinished();
    }
    if (finishWord_.exchange(2) == 1) wakeOnWord(&finishWord_, INT32_MAX);
    detail::OperationScheduler* const scheduler = scheduler_;
    if (scheduler != nullptr) scheduler->finished(*this);
    completesHere = completion && !detail::runOnPoolThread(completion);
    // What runs here next may wait for operations that this thread would run after it.
    const bool isBusy = completesHere || detail::OperationScheduler::owesRuns();
    if (isBusy && scheduler != nullptr) scheduler->replaceRunner();
  }
  if (completesHere) [&]() noexcept { completion(); }();  // as on a thread of its own
  detail::OperationScheduler::payDebts();
}

void Operation::waitUntilFinished() {
  const Ref<Operation> self = hold();
  if (finishWord_ != 2) detail::OperationScheduler::payAllDebts();
  for (std::uint32_t word = finishWord_; word != 2; word = finishWord_) {
    if (word == 0) finishWord_.compare_exchange_strong(word, 1);
    waitOnWord(finishWord_, 1);
  }
}

// Observers are shared, so that they are not copied or destroyed with the lock held.
void Operation::addObserver(Observer observer) {
  const auto added = std::make_shared<const Observer>(std::move(observer));
  const Locked guard(lock_);
  auto all = observers_ == nullptr ? Observers() : *observers_;
  all.push_back(added);
  observers_ = std::make_shared<const Observers>(std::move(all));
  hasObservers_ = true;
}

void Operation::notify(std::string_view key, Change change) {
  if (!hasObservers_) return;
  const Ref<Operation> self = hold();
  std::shared_ptr<const Observers> observers;
  {
    const Locked guard(lock_);
    observers = observers_;
  }
  for (const auto& each : *observers) (*each)(*this, key, change);
}

void Operation::willChangeValueForKey(std::string_view key) { notify(key, Change::will); }

void Operation::didChangeValueForKey(std::string_view key) {
  const Ref<Operation> self = hold();
  notify(key, Change::did);
  if (key == isFinishedKey && isFinished()) return noticeFinished();
  detail::OperationScheduler* const scheduler = scheduler_;
  if (key == isReadyKey && scheduler != nullptr && isReady()) scheduler->becameReady(*this);
}

Ref<BlockOperation> BlockOperation::blockOperationWithBlock(std::function<void()> block) {
  auto operation = Ref<BlockOperation>::adopt(new BlockOperation);
  operation->addExecutionBlock(std::move(block));
  return operation;
}

void BlockOperation::addExecutionBlock(std::function<void()> block) {
  if (block) blocks_.push_back(std::move(block));
}

void BlockOperation::main() {
  if (blocks_.size() == 1) return blocks_.front()();
  groupApply(blocks_.size(), [this](std::size_t i) { blocks_[i](); });
}

}  // namespace tq
