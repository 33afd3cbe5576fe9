#include <unistd.h>

#include <TQFoundation/TQFoundation.h>

#include "support/FailingAllocations.h"
#include "support/FailingThreads.h"
#include "support/Numbers.h"
#include "support/OnDestruction.h"

namespace {

Ref<BlockOperation> block(std::function<void()> run) {
  return BlockOperation::blockOperationWithBlock(std::move(run));
}

struct Counted final : Subclass<Counted, AsynchronousOperation> {
  static constexpr std::string_view className = "Counted";
  explicit Counted(int& runs) : runs_(runs) {}
  Progress run() override { return ++runs_, Progress::finished; }
  int& runs_;
};

// All of it runs on this thread, and every wait ends.
void workWithoutThreads() {
  test::hasThreads = false;
  constexpr int kMany = 100'000;
  const std::array queues = {OperationQueue::init(), OperationQueue::init()};
  for (const auto& each : queues) each->setMaxConcurrentOperationCount(kMany);
  int runs = 0;
  // Many operations that start one another do not exhaust the stack.
  const struct {
    bool isAsynchronous, isChain;
    std::size_t queueCount;
  } kinds[] = {{false, true, 1}, {false, true, 2}, {true, false, 1}, {true, true, 1}};
  for (const auto& kind : kinds) {
    for (const auto& each : queues) each->setSuspended(true);
    Ref<Operation> last;
    for (std::size_t i = 0; i < kMany; ++i) {
      Ref<Operation> next = block([&] { ++runs; });
      if (kind.isAsynchronous) next = makeRef<Counted>(runs);
      if (kind.isChain && last != nullptr) next->addDependency(*last);
      queues[i % kind.queueCount]->addOperation(next);
      last = next;
    }
    last->setCompletionBlock([&] { ++runs; });
    for (const auto& each : queues) each->setSuspended(false);
    last->waitUntilFinished();
    for (const auto& each : queues) each->waitUntilAllOperationsAreFinished();
    EXPECT_EQ(std::exchange(runs, 0), kMany + 1);
  }

  // An operation and its completion block wait for operations that they add, and for ready ones.
  queues[0]->setSuspended(true);
  queues[1]->setMaxConcurrentOperationCount(1);
  const auto addAndWait = [&] {
    const auto inner = block([&] { ++runs; });
    queues[0]->addOperation(inner);
    inner->waitUntilFinished();
  };
  const auto outer = block(addAndWait), ready = block([&] { ++runs; });
  const auto dependent = block([&] { ++runs; });
  dependent->addDependency(*outer);
  dependent->addDependency(*ready);
  outer->setCompletionBlock([&] {
    addAndWait();
    dependent->waitUntilFinished();
    queues[1]->waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, 4);
  });
  const auto opening = block([] {}), second = block([] {});
  second->addDependency(*opening);
  second->setCompletionBlock([&] { outer->waitUntilFinished(); });
  queues[0]->addOperation(second);
  queues[1]->setSuspended(true);
  queues[1]->addOperation(opening);
  queues[1]->addOperation(outer);
  queues[1]->addOperation(ready);
  queues[0]->addOperation(dependent);
  queues[0]->setSuspended(false);
  queues[1]->setSuspended(false);
  EXPECT_EQ(runs, 4);

  const Ref<Array> words = Array::arrayWithObjects({String::of("a"), String::of("b")});
  EXPECT_EQ(applyBlockConcurrentlyAndCountSuccess(*words, [](Object&) { return true; }), 2u);
  EXPECT_EQ(concurrentMap(*words, [](Object& each) { return share(each); })->count(), 2u);
  std::size_t mapped = 0;
  mapWithMaxConcurrencyCount(
      *words, 0, [](Object& each) { return share(each); },
      [&](Ref<Array> results) { mapped = results->count(); });
  EXPECT_EQ(mapped, 2u);

  // Without memory as well, an operation is added and runs, or is not added.
  test::warmUpWeakReferences();
  failEachAllocation([] {
    const auto small = OperationQueue::init();
    int done = 0;
    small->setSuspended(true);
    const auto before = block([&] { ++done; });
    for (int i = 0; i < 3; ++i) {
      const std::size_t count = small->operationCount();
      try {
        const auto after = block([&] { ++done; });
        after->addDependency(*before);
        small->addOperation(after);
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(small->operationCount(), count);
        throw;
      }
    }
    small->addOperation(before);
    small->setSuspended(false);
    small->waitUntilAllOperationsAreFinished();
    return done == 4;
  });
}

// A new thread does its work even if the thread that creates it is stopped.
void workWithASlowCreator() {
  static std::atomic<bool> hasRun{false};
  test::hasThreads = true;
  test::afterCreation = [] {
    for (int i = 0; i < 5000 && !hasRun; ++i) ::usleep(1000);
  };
  const auto operation = block([] {});
  operation->setCompletionBlock([] { hasRun = true; });
  operation->start();
  EXPECT_TRUE(hasRun);
}

TEST(ConcurrencyFaultDeathTest, WithoutThreadsWorkRunsOnTheCaller) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        workWithoutThreads();
        workWithASlowCreator();
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(ConcurrencyFault, ACacheStoresCompletelyOrNotAtAll) {
  test::warmUpWeakReferences();
  std::array<Ref<Object>, 6> owners;
  for (auto& owner : owners) owner = String::of("owner");
  failEachAllocation([&] {
    TQCache* open = nullptr;
    const std::function<void()> callBack = [&] {
      if (open != nullptr) (void)open->count();
    };
    const Ref<TQCache> cache = TQCache::init();
    const ScopedValue isOpen(open, cache.get());
    for (int key = 0; key < 3; ++key) {
      for (const Ref<Object>& owner : owners) {
        const std::size_t before = cache->count();
        const Ref<Object> name = String::of(std::to_string(key));
        try {
          cache->setCachedObject(makeRef<test::OnDestruction>(callBack), *owner, *name);
        } catch (const std::bad_alloc&) {
          EXPECT_EQ(cache->count(), before);
          EXPECT_EQ(cache->rawObjectForOwner(*owner, *name), nullptr);
          throw;
        }
      }
    }
    return cache->count() == owners.size();
  });
}

TEST(ConcurrencyFault, ACreationWithoutMemoryIsTriedAgain) {
  test::warmUpWeakReferences();
  const Ref<Object> owner = String::of("owner");
  failEachAllocation([&] {
    const Ref<TQCache> cache = TQCache::init();
    const Ref<MutableArray> key = MutableArray::array();  // copied for each entry
    key->addObject(owner);
    const auto create = [] { return String::of(std::string(100, 'x')); };
    try {
      return cache->cachedObjectForOwner(*owner, *key, create) != nullptr;
    } catch (const std::bad_alloc&) {
      EXPECT_NE(cache->cachedObjectForOwner(*owner, *key, create), nullptr);
      throw;
    }
  });
}

TEST(ConcurrencyFault, APoolLosesNoObjects) {
  failEachAllocation([] {
    TQObjectPool* open = nullptr;
    const std::function<void()> callBack = [&] {
      if (open != nullptr) (void)open->maximumPoolCount();
    };
    const auto pool = TQObjectPool::initWithObjectCreatorBlock([] { return String::of("new"); });
    const ScopedValue isOpen(open, pool.get());
    for (int i = 0; i < 30; ++i) pool->recycleObject(makeRef<test::OnDestruction>(callBack));
    try {
      pool->setMaximumPoolCount(10);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(pool->maximumPoolCount(), 0u);
      pool->allObjectsWithBlock([](auto all) { EXPECT_EQ(all.size(), 30u); });
      throw;
    }
    return pool->removeAllObjects().size() == 10;
  });
}

struct Target final : Subclass<Target> {
  static constexpr std::string_view className = "Target";
  void update() { ++updates; }
  int updates = 0;
};

TEST(ConcurrencyFault, ARequestWithoutMemoryCanBeMadeAgain) {
  test::warmUpWeakReferences();
  const Ref<Target> target = makeRef<Target>();
  const auto twice = [](const auto& action) {
    try {
      action();
    } catch (const std::bad_alloc&) {
      action();
    }
  };
  failEachAllocation([&] {
    target->updates = 0;
    for (const auto strategy : {TQRateLimiterUpdateOnMainQueue, TQRateLimiterUpdateInRunLoop}) {
      const auto limiter = TQRateLimiter::initWithTarget(target, &Target::update, strategy);
      twice([&] { limiter->setNeedsUpdate(true); });
      twice([] { RunLoop::main().runOnce(); });
    }
    EXPECT_EQ(target->updates, 2);
    return true;
  });
}

TEST(ConcurrencyFault, AMapReturnsAllResultsOrThrows) {
  const Ref<Array> array = test::numbers(40);
  failEachAllocation([&] {
    const auto twice = concurrentMap(*array, [](Object& number) {
      return String::of(number.description() + number.description());
    });
    return twice->count() == 40 && twice->objectAtIndex(39).description() == "3939";
  });
}

}  // namespace
