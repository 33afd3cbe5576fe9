#include <TQFoundation/platform/operations/Operation.h>

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <TQFoundation/objects/Exception.h>

namespace tq {
namespace {

using testing::ElementsAre;

// Runs what it is told, and keeps what is announced of it.
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

 private:
  std::function<void(Work&)> act_;
};

std::string stateOf(const Operation& operation) {
  std::string state;
  if (operation.isReady()) state += "ready ";
  if (operation.isExecuting()) state += "executing ";
  if (operation.isFinished()) state += "finished ";
  if (operation.isCancelled()) state += "cancelled ";
  return state;
}

// Every state, and what each request does in it.
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
  EXPECT_EQ(stateOf(*later), "ready ") << "of what has finished before";
}

TEST(Operation, CancelledBeforeItStartsFinishesWithoutItsWork) {
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

  // One that has finished is no reason to wait, and what has finished holds none.
  const auto late = makeRef<Work>();
  late->addDependency(*one);
  late->addDependency(*one);
  EXPECT_EQ(late->dependencies().size(), 1u);
  EXPECT_TRUE(late->isReady());
  late->start();
  late->addDependency(*kept);
  EXPECT_TRUE(late->dependencies().empty());
}

TEST(Operation, WhatMainThrowsPassesThroughAfterItHasFinished) {
  const auto work = makeRef<Work>([](Work&) { throw std::runtime_error("main"); });
  EXPECT_THROW(work->start(), std::runtime_error);
  EXPECT_EQ(stateOf(*work), "ready finished ");
  work->start();
}

TEST(Operation, CompletionAndWaitersAreServed) {
  std::atomic<int> completed{0};
  const auto work = makeRef<Work>([](Work&) { std::this_thread::yield(); });
  work->setCompletionBlock([&] { ++completed; });
  std::vector<std::jthread> waiters;
  for (int i = 0; i < 3; ++i) {
    waiters.emplace_back([&] {
      work->waitUntilFinished();
      EXPECT_TRUE(work->isFinished());
    });
  }
  work->start();
  waiters.clear();
  while (completed == 0) std::this_thread::yield();
}

TEST(BlockOperation, RunsAllItsBlocks) {
  std::atomic<int> runs{0};
  const auto operation = BlockOperation::blockOperationWithBlock([&] { ++runs; });
  operation->addExecutionBlock([&] { runs += 10; });
  operation->addExecutionBlock(nullptr);
  operation->start();
  EXPECT_EQ(runs, 11);
  BlockOperation::blockOperationWithBlock(nullptr)->start();

  std::barrier<> all(5);  // more of them than there are workers
  const auto meeting = BlockOperation::blockOperationWithBlock([&] { all.arrive_and_wait(); });
  for (int i = 1; i < 5; ++i) meeting->addExecutionBlock([&] { all.arrive_and_wait(); });
  meeting->start();
  EXPECT_TRUE(meeting->isFinished());
}

}  // namespace
}  // namespace tq
