#include <TQFoundation/concurrency/work/AsynchronousOperation.h>
#include <TQFoundation/concurrency/work/TQOperation.h>
#include <TQFoundation/concurrency/work/TQURLOperation.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/OperationQueue.h>

#include "support/Threads.h"

namespace {

using Change = Operation::Change;

// An operation whose start() is a block.
struct Starting final : Subclass<Starting, TQOperation> {
  static constexpr std::string_view className = "Starting";
  explicit Starting(std::function<void(Starting&)> block) : block_(std::move(block)) {}
  void start() override { block_(*this); }
  const std::function<void(Starting&)> block_;
};

TEST(TQOperation, NotifiesObserversBeforeAndAfterChanges) {
  const auto operation = makeRef<TQOperation>();
  std::vector<std::string> announced;
  operation->addObserver([&](Operation& each, std::string_view key, Change change) {
    announced.push_back(std::string(key) + (change == Change::will ? " will " : " did ") +
                        (each.isFinished() ? "f" : "") + (each.isExecuting() ? "e" : "") +
                        (each.isCancelled() ? "c" : ""));
  });
  operation->setExecuting(true);
  operation->setExecuting(true);
  operation->setCancelled(true);
  operation->setFinished(false);
  operation->setFinished(true);
  EXPECT_THAT(announced,
              ElementsAre("isExecuting will ", "isExecuting did e", "isCancelled will e",
                          "isCancelled did ec", "isFinished will ec", "isFinished did fec"));
  EXPECT_TRUE(operation->isAsynchronous());
}

struct Leaving final : Subclass<Leaving, TQOperation> {
  static constexpr std::string_view className = "Leaving";
  ~Leaving() override {
    setCancelled(!isFinished());
    EXPECT_TRUE(isCancelled());
  }
};

TEST(TQOperation, InheritedStartAndCancelDoNotChangeTheState) {
  static_cast<void>(makeRef<Leaving>());  // its destructor does
  const auto operation = makeRef<TQOperation>();
  operation->cancel();
  EXPECT_FALSE(operation->isCancelled());
  operation->start();
  EXPECT_FALSE(operation->isFinished());
  const auto dependent = makeRef<TQOperation>();
  dependent->addDependency(*operation);
  EXPECT_FALSE(dependent->isReady());
  operation->setFinished(true);
  EXPECT_TRUE(dependent->isReady());
}

TEST(TQOperation, KeepsItsSlotInTheQueueUntilSetFinished) {
  const auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(1);
  const auto next = BlockOperation::blockOperationWithBlock([] {});
  queue->addOperation(makeRef<Starting>([next](Starting& lingering) {
    lingering.setFinished(true);
    next->waitUntilFinished();
  }));
  queue->addOperation(*next);
  queue->waitUntilAllOperationsAreFinished();  // blocks if the first one keeps its slot
  std::latch hasStarted(1), mayEnd(1);
  const auto elsewhere = makeRef<Starting>([&](Starting& operation) {
    hasStarted.count_down();
    std::thread([&, self = share(operation)] {
      mayEnd.wait();
      self->setFinished(true);
    }).detach();
  });
  std::atomic<bool> hasRun{false};
  queue->addOperation(elsewhere);
  queue->addOperationWithBlock([&] { hasRun = true; });
  hasStarted.wait();
  const auto other = OperationQueue::init();  // gives the first queue time to fail
  other->addOperationWithBlock([] {});
  other->waitUntilAllOperationsAreFinished();
  EXPECT_FALSE(hasRun);
  mayEnd.count_down();
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(hasRun);
}

// The observer of the dependent waits for a thread that reads the state of the first operation.
TEST(TQOperation, ReleasesDependentsOutsideItsMonitor) {
  const auto operation = makeRef<TQOperation>();
  const auto dependent = makeRef<Operation>();
  dependent->addDependency(*operation);
  bool isRead = false;
  dependent->addObserver(
      [&](auto&&...) { std::thread([&] { isRead = operation->isFinished(); }).join(); });
  operation->addObserver([&](Operation&, std::string_view key, Change) {
    if (key == "isExecuting") operation->setFinished(true);  // nested in another change
  });
  operation->setExecuting(true);
  EXPECT_TRUE(isRead);
}

struct Job final : Subclass<Job, AsynchronousOperation> {
  static constexpr std::string_view className = "Job";
  explicit Job(std::function<Progress(Job&)> work) : work_(std::move(work)) {}
  Progress run() override { return work_(*this); }
  void cancel() override {
    AsynchronousOperation::cancel();
    if (finishesOnCancel) finish();
  }
  using AsynchronousOperation::finish;
  bool finishesOnCancel = false;
  const std::function<Progress(Job&)> work_;
};

TEST(AsynchronousOperation, FinishesByReturningByFinishAndByCancel) {
  using Progress = Job::Progress;
  const auto queue = OperationQueue::init();
  queue->setMaxConcurrentOperationCount(1);
  queue->setSuspended(true);
  std::atomic<int> runs{0};
  const auto work = [&](Job&) { return ++runs, Progress::finished; };
  const auto returns = makeRef<Job>(work), cancelled = makeRef<Job>(work);
  const auto finished = makeRef<Job>(work);
  const auto continues = makeRef<Job>([&](Job& self) {
    std::thread([&, job = share(self)] { ++runs, job->finish(); }).detach();
    return Progress::continues;
  });
  finished->finishesOnCancel = true;
  for (const auto& each : {returns, continues, cancelled, finished}) queue->addOperation(each);
  cancelled->cancel();
  finished->cancel();
  EXPECT_TRUE(finished->isFinished());
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(runs, 2);
  for (const auto& each : {returns, continues, cancelled, finished}) {
    EXPECT_TRUE(each->isFinished() && !each->isExecuting());
    EXPECT_EQ(each->isCancelled(), each == cancelled || each == finished);
  }
  EXPECT_NO_THROW(returns->start()) << "it has finished";
  const auto fails = makeRef<Job>([](Job&) -> Progress { throw 1; });
  const auto later = makeRef<Job>([](Job& self) {
    EXPECT_THROW(self.start(), Exception) << "twice";
    return Progress::continues;
  });
  later->addDependency(*fails);
  EXPECT_THROW(later->start(), Exception) << "not ready";
  EXPECT_THROW(fails->start(), int);
  EXPECT_TRUE(fails->isFinished());
  later->start();
  later->finish();
  EXPECT_TRUE(later->isFinished());
}

TEST(AsynchronousOperationStress, DoesNotExecuteAfterItHasFinished) {
  std::vector<Ref<Job>> jobs(20'000);
  for (auto& job : jobs) job = makeRef<Job>([](Job&) { return Job::Progress::continues; });
  test::inStep(20'000,
               [&](int t, std::size_t i) { t == 0 ? jobs[i]->start() : jobs[i]->finish(); });
  for (const auto& job : jobs) EXPECT_TRUE(job->isFinished() && !job->isExecuting());
}

TEST(TQURLOperation, SharesOneSession) {
  const auto operation = makeRef<TQURLOperation>();
  EXPECT_EQ(operation->urlSession(), TQURLOperation::defaultURLSession());
  EXPECT_EQ(makeRef<TQURLOperation>()->urlSession(), operation->urlSession());
}

}  // namespace
