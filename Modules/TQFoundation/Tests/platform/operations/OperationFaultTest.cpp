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

}  // namespace
