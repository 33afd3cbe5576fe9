#include <TQFoundation/platform/operations/OperationQueue.h>

#include <utility>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/detail/OperationScheduler.h>

namespace tq {

OperationQueue::OperationQueue() : scheduler_(makeRef<detail::OperationScheduler>().leak()) {}

OperationQueue::~OperationQueue() {
  scheduler_->abandon();
  scheduler_->release();
}

Ref<OperationQueue> OperationQueue::init() {
  return Ref<OperationQueue>::adopt(new OperationQueue);
}

void OperationQueue::setMaxConcurrentOperationCount(std::ptrdiff_t count) {
  if (count < defaultMaxConcurrentOperationCount) {
    throw Exception(InvalidArgumentException,
                    "setMaxConcurrentOperationCount: " + std::to_string(count));
  }
  scheduler_->setMaximum(count);
}

std::ptrdiff_t OperationQueue::maxConcurrentOperationCount() const noexcept {
  return scheduler_->maximum();
}

void OperationQueue::setSuspended(bool isSuspended) { scheduler_->setSuspended(isSuspended); }

bool OperationQueue::isSuspended() const { return scheduler_->isSuspended(); }

void OperationQueue::addOperation(Operation& operation) { scheduler_->add(operation); }

void OperationQueue::addOperationWithBlock(std::function<void()> block) {
  addOperation(BlockOperation::blockOperationWithBlock(std::move(block)));
}

std::vector<Ref<Operation>> OperationQueue::operations() const { return scheduler_->operations(); }

std::size_t OperationQueue::operationCount() const { return scheduler_->count(); }

void OperationQueue::cancelAllOperations() {
  for (const Ref<Operation>& each : operations()) each->cancel();
}

void OperationQueue::waitUntilAllOperationsAreFinished() { scheduler_->waitUntilEmpty(); }

}  // namespace tq
