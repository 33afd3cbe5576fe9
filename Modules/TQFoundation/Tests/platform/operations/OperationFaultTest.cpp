#include <TQFoundation/platform/operations/OperationQueue.h>

#include "support/FailingAllocations.h"

namespace {

TEST(OperationQueueFault, WhatWasAddedRunsAlsoWithoutMemory) {
  for (int n = 0; n < 20; ++n) {
    std::atomic<int> runs = 0;
    const Ref<OperationQueue> queue = OperationQueue::init();
    const Ref<Operation> operation = BlockOperation::blockOperationWithBlock([&] { ++runs; });
    bool isAdded = true;
    allocationsToGo = n;
    try {
      queue->addOperation(operation);
    } catch (const std::bad_alloc&) {
      isAdded = false;
    }
    allocationsToGo = -1;
    queue->waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, isAdded ? 1 : 0) << n;
  }
}

TEST(OperationQueueFault, ASuspendedQueueIsDestroyedWithoutMemory) {
  auto queue = OperationQueue::init();
  queue->setSuspended(true);
  std::vector<Ref<Operation>> all;
  for (int i = 0; i < 3; ++i) {
    all.push_back(BlockOperation::blockOperationWithBlock([] { ADD_FAILURE() << "cancelled"; }));
    queue->addOperation(all.back());
  }
  // While the first one is cancelled, the second one finishes and is destroyed.
  all[0]->addObserver([&](Operation&, std::string_view key, auto) {
    if (key != Operation::isCancelledKey || all[1] == nullptr) return;
    all[1]->cancel();
    all[1]->start();
    all[1] = nullptr;
  });
  allocationsToGo = 0;
  queue = nullptr;
  allocationsToGo = -1;
  all[0]->waitUntilFinished();
  all[2]->waitUntilFinished();
}

}  // namespace
