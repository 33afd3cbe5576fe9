#include <TQFoundation/platform/operations/OperationQueue.h>

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <cstdlib>
#include <latch>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include <TQFoundation/objects/Exception.h>

namespace tq {
namespace {

using testing::ElementsAre;

Ref<BlockOperation> block(std::function<void()> run) {
  return BlockOperation::blockOperationWithBlock(std::move(run));
}

TEST(OperationQueue, StartsByPriorityThenInTheOrderOfBecomingReady) {
  const auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(1);
  queue->setSuspended(true);
  std::vector<int> order;
  const auto append = [&](int number, OperationQueuePriority priority) {
    auto operation = block([&order, number] { order.push_back(number); });
    operation->setQueuePriority(priority);
    return operation;
  };
  const auto first = append(4, OperationQueuePriority::normal);
  const auto waiting = append(7, OperationQueuePriority::normal);
  waiting->addDependency(*first);
  queue->addOperation(waiting);
  queue->addOperation(append(8, OperationQueuePriority::veryLow));
  queue->addOperation(append(6, static_cast<OperationQueuePriority>(0)));
  queue->addOperation(append(2, OperationQueuePriority::high));
  queue->addOperation(append(3, OperationQueuePriority::high));
  queue->addOperation(append(1, OperationQueuePriority::veryHigh));
  first->start();
  EXPECT_EQ(queue->operationCount(), 6u);
  EXPECT_EQ(queue->operations()[0], waiting);
  EXPECT_THAT(order, ElementsAre(4));
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_THAT(order, ElementsAre(4, 1, 2, 3, 6, 7, 8));
}

TEST(OperationQueue, RefusesWhatCannotBeAdded) {
  const auto queue = OperationQueue::init();
  EXPECT_EQ(queue->maxConcurrentOperationCount(), -1);
  EXPECT_THROW(queue->setMaxConcurrentOperationCount(-2), Exception);
  queue->setSuspended(true);
  EXPECT_TRUE(queue->isSuspended());
  const auto added = block([] {});
  queue->addOperation(added);
  EXPECT_THROW(queue->addOperation(added), Exception);
  EXPECT_THROW(OperationQueue::init()->addOperation(added), Exception);
  const auto finished = block([] {});
  finished->start();
  EXPECT_THROW(queue->addOperation(finished), Exception);
  queue->addOperationWithBlock(nullptr);
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_THROW(queue->addOperation(added), Exception);
  EXPECT_EQ(queue->operationCount(), 0u);
}

/// Starts itself when it is asked for the first time whether it has finished: between the queue's
/// look at it and its taking it up.
struct Sly final : Subclass<Sly, Operation> {
  static constexpr std::string_view className = "Sly";
  bool isFinished() const override {
    if (std::exchange(isAsked, true)) return Operation::isFinished();
    const_cast<Sly*>(this)->start();
    return false;
  }
  mutable bool isAsked = false;
};

TEST(OperationQueue, LetsGoOfWhatFinishesWhileItIsAdded) {
  const auto queue = OperationQueue::init();
  queue->addOperation(makeRef<Sly>());
  EXPECT_EQ(queue->operationCount(), 0u);
  queue->waitUntilAllOperationsAreFinished();
}

// Three at a time meet, so fewer would wait for ever.
TEST(OperationQueue, RunsAsManyAsTheMaximumAtOnceAndNoneAtZero) {
  const auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(0);
  std::atomic<int> running{0};
  std::atomic<int> done{0};
  std::barrier<> three(3);
  for (int i = 0; i < 60; ++i) {
    queue->addOperationWithBlock([&] {
      EXPECT_LE(++running, 3);
      three.arrive_and_wait();
      --running;
      ++done;
    });
  }
  EXPECT_EQ(running, 0);
  queue->setMaxConcurrentOperationCount(3);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(done, 60);
}

TEST(OperationQueue, CancelledOperationsFinishWithoutTheirWork) {
  const auto queue = OperationQueue::init();
  queue->setSuspended(true);
  std::atomic<int> runs{0};
  const auto never = block([] {});
  const auto waiting = block([&] { ++runs; });
  waiting->addDependency(*never);
  queue->addOperation(waiting);
  queue->addOperationWithBlock([&] { ++runs; });
  queue->cancelAllOperations();
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(runs, 0);
}

TEST(OperationQueue, WorkOutlivesTheQueueAndNobodyWaitsForEver) {
  std::atomic<int> runs{0};
  const auto last = block([&] { ++runs; });
  {
    const auto queue = OperationQueue::init();
    for (int i = 0; i < 10; ++i) {
      const auto operation = block([&] { ++runs; });
      last->addDependency(*operation);
      queue->addOperation(operation);
    }
    queue->addOperation(last);
  }
  last->waitUntilFinished();
  EXPECT_EQ(runs, 11);
  const auto stuck = block([&] { ++runs; });
  {
    const auto queue = OperationQueue::init();
    queue->setMaxConcurrentOperationCount(0);
    queue->addOperation(stuck);
  }
  stuck->waitUntilFinished();
  EXPECT_TRUE(stuck->isCancelled());
  EXPECT_EQ(runs, 11);
}

// Random graphs: nothing starts before what it depends on has finished, and all of it is done.
TEST(OperationQueueStress, DependenciesHoldUnderManyThreads) {
  std::mt19937 random(11);
  for (int round = 0; round < 30; ++round) {
    const auto queue = OperationQueue::init();
    queue->setMaxConcurrentOperationCount(1 + round % 5);
    constexpr std::size_t kCount = 300;
    std::vector<std::atomic<bool>> isDone(kCount);
    std::vector<Ref<BlockOperation>> all;
    for (std::size_t i = 0; i < kCount; ++i) {
      std::vector<std::size_t> needed;
      for (std::size_t d = random() % 4; i != 0 && d != 0; --d) needed.push_back(random() % i);
      all.push_back(block([&isDone, needed, i] {
        for (const std::size_t each : needed) EXPECT_TRUE(isDone[each]);
        EXPECT_FALSE(isDone[i].exchange(true));
      }));
      for (const std::size_t each : needed) all[i]->addDependency(*all[each]);
    }
    std::jthread adder([&] {
      for (std::size_t i = 0; i < kCount; i += 2) queue->addOperation(all[i]);
    });
    for (std::size_t i = kCount - 1; i < kCount; i -= 2) queue->addOperation(all[i]);
    adder.join();
    queue->waitUntilAllOperationsAreFinished();
    for (const auto& each : isDone) EXPECT_TRUE(each);
  }
}

TEST(OperationQueueDeathTest, ExitIsCleanAndExceptionsStopTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        static std::latch never(1);
        const auto queue = OperationQueue::init();
        for (int i = 0; i < 100; ++i) queue->addOperationWithBlock([] { never.wait(); });
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^$");
  EXPECT_DEATH(
      {
        const auto queue = OperationQueue::init();
        queue->addOperationWithBlock([] { throw 1; });
        std::latch(1).wait();
      },
      "terminate");
}

}  // namespace
}  // namespace tq
