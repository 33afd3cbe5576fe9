#include <TQFoundation/platform/operations/Operation.h>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/OperationQueue.h>

#include "support/Threads.h"

namespace {

// Runs a closure, and records the announced changes.
struct Work final : Subclass<Work, Operation> {
  static constexpr std::string_view className = "Work";
  explicit Work(std::function<void(Work&)> act = {}) : act_(std::move(act)) {
    addObserver([this](Operation&, std::string_view key, Change change) {
      if (change == Change::did) announced.emplace_back(key);
    });
  }
  void main() override {
    ++runs;
    EXPECT_TRUE(isExecuting() && isReady() && !isFinished());
    if (act_) act_(*this);
  }

  std::atomic<int> runs{0};
  std::vector<std::string> announced;
  std::function<void(Work&)> act_;
};

std::string stateOf(const Operation& operation) {
  return std::string(operation.isReady() ? "ready " : "") +
         (operation.isExecuting() ? "executing " : "") +
         (operation.isFinished() ? "finished " : "") +
         (operation.isCancelled() ? "cancelled " : "");
}

// Each state, and the effect of each request in it.
TEST(Operation, StatesFollowTheTable) {
  const auto before = makeRef<Work>();
  const auto work = makeRef<Work>([&](Work& self) {
    EXPECT_THROW(self.start(), Exception) << "twice";
    self.cancel();
    EXPECT_EQ(stateOf(self), "ready executing cancelled ");
  });
  work->addDependency(*before);
  work->addDependency(*before);
  EXPECT_THAT(work->dependencies(), ElementsAre(before));
  EXPECT_EQ(stateOf(*work), "");
  EXPECT_THROW(work->start(), Exception) << "not ready";
  before->start();
  EXPECT_EQ(stateOf(*before), "ready finished ");
  EXPECT_EQ(stateOf(*work), "ready ");
  work->start();
  EXPECT_EQ(stateOf(*work), "ready finished cancelled ");
  EXPECT_EQ(work->runs, 1);
  work->start();
  work->cancel();
  work->waitUntilFinished();
  EXPECT_EQ(work->runs, 1) << "once";
  EXPECT_TRUE(work->dependencies().empty());
  EXPECT_THAT(work->announced,
              ElementsAre("isReady", "isExecuting", "isCancelled", "isExecuting", "isFinished"));

  const auto later = makeRef<Work>();
  later->addDependency(*work);
  EXPECT_EQ(stateOf(*later), "ready ") << "its dependency had finished before";
}

TEST(Operation, CancelledBeforeItStartsFinishesWithoutMain) {
  const auto before = makeRef<Work>();
  const auto work = makeRef<Work>();
  const auto after = makeRef<Work>();
  work->addDependency(*before);
  after->addDependency(*work);
  work->cancel();
  work->cancel();
  EXPECT_EQ(stateOf(*work), "ready cancelled ");
  work->start();
  EXPECT_EQ(stateOf(*work), "ready finished cancelled ");
  EXPECT_EQ(work->runs, 0);
  EXPECT_THAT(work->announced, ElementsAre("isCancelled", "isReady", "isFinished"));
  EXPECT_EQ(stateOf(*after), "ready ");
}

TEST(Operation, DependenciesMayBeRemovedAndDropped) {
  const auto work = makeRef<Work>();
  const auto one = makeRef<Work>();
  work->addDependency(*one);
  work->addDependency(*makeRef<Work>());
  const auto kept = work->dependencies()[1];
  work->removeDependency(*one);
  work->removeDependency(*one);
  EXPECT_FALSE(work->isReady());
  work->removeDependency(*kept);
  EXPECT_TRUE(work->isReady());
  one->start();
  auto dropped = makeRef<Work>();
  dropped->addDependency(*kept);
  dropped = nullptr;
  kept->start();
  EXPECT_EQ(one->referenceCount(), 1u);

  // A finished operation is not waited for, and retains no dependencies.
  const auto late = makeRef<Work>();
  late->addDependency(*one);
  late->addDependency(*one);
  EXPECT_EQ(late->dependencies().size(), 1u);
  EXPECT_TRUE(late->isReady());
  late->start();
  late->addDependency(*kept);
  EXPECT_TRUE(late->dependencies().empty());
}

TEST(Operation, ItsEndPassesExceptionsOnRunsTheCompletionBlockAndWakesThreads) {
  const auto throwing = makeRef<Work>([](Work&) { throw std::runtime_error("main"); });
  EXPECT_THROW(throwing->start(), std::runtime_error);
  EXPECT_EQ(stateOf(*throwing), "ready finished ");
  throwing->start();
  std::atomic<int> completed{0};
  const auto work = makeRef<Work>([](Work&) { std::this_thread::yield(); });
  work->setCompletionBlock([&] { ++completed; });
  onThreads(4, [&](int t) {
    t == 3 ? work->start() : work->waitUntilFinished();
    EXPECT_TRUE(work->isFinished());
  });
  while (completed == 0) std::this_thread::yield();
}

Ref<BlockOperation> block(std::function<void()> run) {
  return BlockOperation::blockOperationWithBlock(std::move(run));
}

TEST(BlockOperation, RunsAllItsBlocks) {
  std::atomic<int> runs{0};
  const auto operation = block([&] { ++runs; });
  operation->addExecutionBlock([&] { runs += 10; });
  operation->addExecutionBlock(nullptr);
  operation->start();
  EXPECT_EQ(runs, 11);
  block(nullptr)->start();

  std::barrier<> all(5);  // more blocks than there are workers
  const auto meeting = block([&] { all.arrive_and_wait(); });
  for (int i = 1; i < 5; ++i) meeting->addExecutionBlock([&] { all.arrive_and_wait(); });
  meeting->start();
  EXPECT_TRUE(meeting->isFinished());
}

TEST(OperationQueue, StartsByPriorityThenInTheOrderOfBecomingReady) {
  const auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(1);
  queue->setSuspended(true);
  std::vector<int> order;
  const auto append = [&](int number, int priority) {
    auto operation = block([&order, number] { order.push_back(number); });
    operation->setQueuePriority(static_cast<OperationQueuePriority>(priority));
    return operation;
  };
  const auto first = append(4, 0);
  const auto waiting = append(7, 0);
  waiting->addDependency(*first);
  queue->addOperation(waiting);
  for (const auto& [number, priority] : Rows<int, int>{{8, -8}, {6, 0}, {2, 4}, {3, 4}, {1, 8}}) {
    queue->addOperation(append(number, priority));
  }
  EXPECT_TRUE(queue->isSuspended());
  first->start();
  EXPECT_EQ(queue->operationCount(), 6u);
  EXPECT_EQ(queue->operations()[0], waiting);
  EXPECT_THAT(order, ElementsAre(4));
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_THAT(order, ElementsAre(4, 1, 2, 3, 6, 7, 8));
}

/// Starts itself at the first call of isFinished(), while the queue is adding it.
struct Sly final : Subclass<Sly, Operation> {
  static constexpr std::string_view className = "Sly";
  bool isFinished() const override {
    if (std::exchange(isAsked, true)) return Operation::isFinished();
    const_cast<Sly*>(this)->start();
    return false;
  }
  mutable bool isAsked = false;
};

TEST(OperationQueue, RefusesWhatCannotBeAddedAndReleasesWhatFinishesMeanwhile) {
  const auto queue = OperationQueue::init();
  queue->addOperation(makeRef<Sly>());
  EXPECT_EQ(queue->operationCount(), 0u);
  EXPECT_THROW(queue->setMaxConcurrentOperationCount(-2), Exception);
  queue->setSuspended(true);
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

// Three operations wait for each other each time, so fewer than three would deadlock.
TEST(OperationQueue, RunsAsManyAsTheMaximumAtOnceAndNoneAtZero) {
  const auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(OperationQueue::defaultMaxConcurrentOperationCount);
  queue->setMaxConcurrentOperationCount(0);
  std::atomic<int> running{0}, done{0};
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

TEST(OperationQueueStress, ItsMaximumIsTheLastOneThatWasSet) {
  std::vector<Ref<OperationQueue>> queues(20'000);
  for (auto& queue : queues) queue = OperationQueue::init();
  inStep(20'000, [&](int t, std::size_t i) { queues[i]->setMaxConcurrentOperationCount(t); });
  for (const auto& queue : queues) {
    queue->addOperationWithBlock([] {});
    if (queue->maxConcurrentOperationCount() != 0) queue->waitUntilAllOperationsAreFinished();
  }
}

TEST(OperationQueue, CancelledOperationsFinishWithoutTheirWork) {
  auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(0);
  const auto never = block([] {});
  const auto waiting = block([] { ADD_FAILURE(); });
  waiting->addDependency(*never);
  queue->addOperation(waiting);
  queue->addOperationWithBlock([] { ADD_FAILURE(); });
  queue->cancelAllOperations();
  queue->setMaxConcurrentOperationCount(1);
  queue->waitUntilAllOperationsAreFinished();
  queue->setMaxConcurrentOperationCount(0);
  const auto stuck = block([] { ADD_FAILURE(); });
  queue->addOperation(stuck);
  queue = nullptr;
  stuck->waitUntilFinished();
  EXPECT_TRUE(stuck->isCancelled());
}

TEST(OperationQueue, OperationsFinishAfterTheQueueIsDestroyed) {
  std::atomic<int> runs{0};
  const auto last = block([&] { ++runs; });
  auto queue = OperationQueue::init();
  for (int i = 0; i < 10; ++i) {
    const auto operation = block([&] { ++runs; });
    last->addDependency(*operation);
    queue->addOperation(operation);
  }
  queue->addOperation(last);
  queue = nullptr;
  last->waitUntilFinished();
  EXPECT_EQ(runs, 11);
}

// Random graphs: operations start after their dependencies, and all of them run once.
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

TEST(OperationQueueDeathTest, ExceptionsStopTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        const auto queue = OperationQueue::init();
        const auto throwing = block([] { throw 1; });
        const auto dependent = block([] { std::_Exit(0); });
        dependent->addDependency(*throwing);
        throwing->setCompletionBlock([] { std::_Exit(0); });
        for (const auto& each : {throwing, dependent}) queue->addOperation(each);
        queue->waitUntilAllOperationsAreFinished();  // nothing learns that it has finished
        std::_Exit(0);
      },
      "terminat");  // libc++abi: "terminating"
}

}  // namespace
