#include <TQFoundation/concurrency/work/AsynchronousOperation.h>
#include <TQFoundation/platform/operations/OperationQueue.h>

#include "support/FailingAllocations.h"

namespace {

struct Quick final : Subclass<Quick, AsynchronousOperation> {
  static constexpr std::string_view className = "Quick";
  Progress run() override { return Progress::finished; }
};

TEST(OperationQueueFault, WhatWasAddedRunsAlsoWithoutMemory) {
  for (int n = 0; n < 20; ++n) {
    std::atomic<int> runs = 0;
    const Ref<OperationQueue> queue = OperationQueue::init();
    const Ref<Operation> operation = BlockOperation::blockOperationWithBlock([&] { ++runs; });
    const auto asynchronous = makeRef<Quick>();
    allocationsToGo = n;
    queue->addOperation(operation);
    queue->addOperation(asynchronous);
    asynchronous->waitUntilFinished();
    allocationsToGo = -1;
    queue->waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, 1) << n;
  }
}

TEST(OperationQueueFault, ASuspendedQueueIsDestroyedWithoutMemory) {
  auto queue = OperationQueue::init();
  queue->setSuspended(true);
  const Ref<Operation> first = BlockOperation::blockOperationWithBlock([] { ADD_FAILURE(); });
  Ref<Operation> second = BlockOperation::blockOperationWithBlock([] {});
  for (const auto& each : {first, second}) queue->addOperation(each);
  first->addObserver([&](auto&&...) {  // the second one finishes while the first is cancelled
    if (const auto held = std::exchange(second, nullptr)) held->start();
  });
  allocationsToGo = 0;
  queue = nullptr;
  allocationsToGo = -1;
  first->waitUntilFinished();
}

}  // namespace
