// Blocks, observers and destructors that release the last reference to the object whose function
// calls them. What the library uses afterwards must still exist; AddressSanitizer checks it.

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string_view>

#include <TQFoundation/concurrency/caches/TQCache.h>
#include <TQFoundation/concurrency/caches/TQCacheDeferredCreation.h>
#include <TQFoundation/concurrency/caches/TQObjectPool.h>
#include <TQFoundation/concurrency/caches/ValueCache.h>
#include <TQFoundation/concurrency/work/ConcurrentMap.h>
#include <TQFoundation/concurrency/work/Debouncer.h>
#include <TQFoundation/concurrency/work/TQOperation.h>
#include <TQFoundation/concurrency/work/TQRateLimiter.h>
#include <TQFoundation/concurrency/work/TimerBlock.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/operations/OperationQueue.h>

#include "support/HandMovedClock.h"
#include "support/OnDestruction.h"

namespace tq {
namespace {

using namespace std::chrono_literals;

/// All that a case uses. drop() releases it; the last reference to each is here.
struct World {
  void drop() {
    ++drops;
    cache = nullptr;
    owner = key = nullptr;
    placeholder = nullptr;
    pool = nullptr;
    value.reset();
    debouncer = nullptr;
    operation = other = nullptr;
    asynchronous = nullptr;
    queue = nullptr;
    limiter = nullptr;
    array = nullptr;
    timer = nullptr;
  }
  Ref<Object> dropAndMake() {
    drop();
    return String::of("made");
  }
  Ref<Object> dropsWhenDestroyed() {
    return makeRef<test::OnDestruction>([this] { drop(); });
  }
  void observe(Operation& observed, std::string_view awaited, Operation::Change at) {
    observed.addObserver(
        [this, awaited, at](Operation&, std::string_view changed, Operation::Change c) {
          if (changed == awaited && c == at) drop();
        });
  }

  int drops = 0;
  Ref<TQCache> cache = TQCache::init();
  Ref<Object> owner = String::of("owner"), key = String::of("key");
  Ref<TQCacheDeferredCreation> placeholder;
  Ref<TQObjectPool> pool;
  std::optional<AnyValueCache<int>> value;
  Ref<Debouncer> debouncer;
  Ref<Operation> operation = makeRef<Operation>(), other = makeRef<Operation>();
  Ref<TQOperation> asynchronous = makeRef<TQOperation>();
  Ref<OperationQueue> queue = OperationQueue::init();
  Ref<TQRateLimiter> limiter;
  Ref<Array> array = Array::arrayWithObjects({String::of("a"), String::of("b")});
  Ref<Timer> timer;
  test::HandMovedClock clock;
};

struct Empty {
  using Value = int;
  void store(std::optional<int>) {}
  std::optional<int> retrieve() { return std::nullopt; }
};

struct Target final : Subclass<Target> {
  static constexpr std::string_view className = "DroppingTarget";
  void update(TQRateLimiter& limiter) {
    drop();
    EXPECT_FALSE(limiter.needsUpdate());
  }
  std::function<void()> drop;
};

struct Case {
  std::string_view name;
  void (*run)(World&);
};

const Case cases[] = {
    {"TQCache::blockingCachedObjectForOwner",
     [](World& w) {
       EXPECT_NE(
           w.cache->blockingCachedObjectForOwner(*w.owner, *w.key, [&] { return w.dropAndMake(); }),
           nullptr);
     }},
    {"TQCache::cachedObjectForOwner with a block",
     [](World& w) {
       EXPECT_NE(w.cache->cachedObjectForOwner(*w.owner, *w.key, [&] { return w.dropAndMake(); }),
                 nullptr);
     }},
    {"TQCache::cachedObjectForOwner",
     [](World& w) {
       w.cache->setCachedObject(
           TQCacheDeferredCreation::createWithBlock([&] { return w.dropAndMake(); }), *w.owner,
           *w.key);
       EXPECT_NE(w.cache->cachedObjectForOwner(*w.owner, *w.key), nullptr);
     }},
    {"TQCache::populateCacheForObjectWithOwner",
     [](World& w) {
       w.cache->populateCacheForObjectWithOwner(*w.owner, *w.key, [&] { return w.dropAndMake(); });
     }},
    {"TQCache::setCachedObject, destructor of the replaced object",
     [](World& w) {
       w.cache->setCachedObject(w.dropsWhenDestroyed(), *w.owner, *w.key);
       w.cache->setCachedObject(nullptr, *w.owner, *w.key);
     }},
    {"TQCache::removeCachedObjectForOwner",
     [](World& w) {
       w.cache->setCachedObject(w.dropsWhenDestroyed(), *w.owner, *w.key);
       w.cache->removeCachedObjectForOwner(*w.owner, *w.key);
     }},
    {"TQCache::removeCachedObjectsForOwner",
     [](World& w) {
       w.cache->setCachedObject(w.dropsWhenDestroyed(), *w.owner, *w.key);
       w.cache->removeCachedObjectsForOwner(*w.owner);
     }},
    {"TQCache::removeCachedObjectsExceptForOwners",
     [](World& w) {
       w.cache->setCachedObject(w.dropsWhenDestroyed(), *w.owner, *w.key);
       w.cache->removeCachedObjectsExceptForOwners({});
     }},
    {"TQCache::removeAllCachedObjects",
     [](World& w) {
       w.cache->setCachedObject(w.dropsWhenDestroyed(), *w.owner, *w.key);
       w.cache->removeAllCachedObjects();
     }},
    {"TQCacheDeferredCreation::selfOrDeferredObject",
     [](World& w) {
       w.placeholder = TQCacheDeferredCreation::createWithBlock([&] { return w.dropAndMake(); });
       EXPECT_NE(w.placeholder->selfOrDeferredObject(), nullptr);
     }},
    {"TQCacheDeferredCreation::unblockingSelfOrDeferredObject",
     [](World& w) {
       w.placeholder = TQCacheDeferredCreation::createWithBlock([&] { return w.dropAndMake(); });
       EXPECT_NE(w.placeholder->unblockingSelfOrDeferredObject(), nullptr);
     }},
    {"TQObjectPool::vendObject",
     [](World& w) {
       const auto inBlock = std::make_shared<int>(7);  // part of the block
       w.pool = TQObjectPool::initWithObjectCreatorBlock([&w, inBlock] {
         auto made = w.dropAndMake();
         EXPECT_EQ(*inBlock, 7);
         return made;
       });
       EXPECT_NE(w.pool->vendObject(), nullptr);
     }},
    {"TQObjectPool::allObjectsWithBlock",
     [](World& w) {
       w.pool = TQObjectPool::initWithObjectCreatorBlock([] { return Ref<Object>(); });
       w.pool->recycleObject(w.key);
       w.pool->allObjectsWithBlock([&](std::span<const Ref<Object>> idle) {
         w.drop();
         EXPECT_EQ(idle[0]->description(), "key");
       });
     }},
    {"TQObjectPool::setMaximumPoolCount, destructor of an idle object",
     [](World& w) {
       w.pool = TQObjectPool::initWithObjectCreatorBlock([] { return Ref<Object>(); });
       w.pool->recycleObject(w.dropsWhenDestroyed());
       w.pool->setMaximumPoolCount(0);
     }},
    {"AnyValueCache::retrieve",
     [](World& w) {
       w.value.emplace(Empty());
       EXPECT_EQ(w.value->retrieve([&] { return w.drop(), 3; }), 3);
     }},
    {"Debouncer::schedulePerformAction, the pending timer holds the last reference",
     [](World& w) {
       w.debouncer = Debouncer::init(1, [] {});
       w.debouncer->schedulePerformAction();
       Debouncer& debouncer = *w.debouncer;
       w.drop();
       debouncer.schedulePerformAction();
     }},
    {"Debouncer, its action",
     [](World& w) {
       w.debouncer = Debouncer::init(0.1, [&w] { w.drop(); });
       w.debouncer->schedulePerformAction();
       w.clock.pass(100ms);
     }},
    {"Timer, its block",
     [](World& w) {
       w.timer = scheduledTimerWithTimeInterval(0.1, true, [&w](Timer& timer) {
         timer.invalidate();
         w.drop();
         EXPECT_FALSE(timer.isValid());
       });
       w.clock.pass(100ms);
     }},
    {"TQRateLimiter::update",
     [](World& w) {
       const auto target = makeRef<Target>();
       target->drop = [&w] { w.drop(); };
       w.limiter = TQRateLimiter::initWithTarget(target, &Target::update);
       w.limiter->update();
     }},
    {"Operation::cancel, before",
     [](World& w) {
       w.observe(*w.operation, "isCancelled", Operation::Change::will);
       w.operation->cancel();
     }},
    {"Operation::cancel, after",
     [](World& w) {
       w.operation->addDependency(*w.other);
       w.observe(*w.operation, "isReady", Operation::Change::will);
       w.operation->cancel();
     }},
    {"Operation::start",
     [](World& w) {
       w.observe(*w.operation, "isExecuting", Operation::Change::will);
       w.operation->start();
     }},
    {"Operation::removeDependency",
     [](World& w) {
       w.operation->addDependency(*w.other);
       w.observe(*w.operation, "isReady", Operation::Change::will);
       w.operation->removeDependency(*w.other);
     }},
    {"TQOperation::setFinished, before",
     [](World& w) {
       w.observe(*w.asynchronous, "isFinished", Operation::Change::will);
       w.asynchronous->setFinished(true);
     }},
    {"TQOperation::setFinished, observer of a dependent",
     [](World& w) {
       w.operation->addDependency(*w.asynchronous);
       w.observe(*w.operation, "isReady", Operation::Change::did);
       w.asynchronous->setFinished(true);
     }},
    {"TQOperation::setExecuting",
     [](World& w) {
       w.observe(*w.asynchronous, "isExecuting", Operation::Change::will);
       w.asynchronous->setExecuting(true);
     }},
    {"TQOperation::setCancelled",
     [](World& w) {
       w.observe(*w.asynchronous, "isCancelled", Operation::Change::did);
       w.asynchronous->setCancelled(true);
     }},
    {"OperationQueue::cancelAllOperations",
     [](World& w) {
       w.queue->setSuspended(true);
       w.queue->addOperation(w.operation);
       w.observe(*w.operation, "isCancelled", Operation::Change::will);
       w.queue->cancelAllOperations();
     }},
    {"OperationQueue::addOperation, runs while the queue is released",
     [](World& w) {
       const auto block = BlockOperation::blockOperationWithBlock([&w] { w.drop(); });
       w.queue->addOperation(block);
       block->waitUntilFinished();
     }},
    {"concurrentMap",
     [](World& w) {
       const auto drops = [&](Object& each) {
         if (each.description() == "a") w.drop();
         return share(each);
       };
       EXPECT_EQ(concurrentMap(*w.array, drops)->count(), 2u);
     }},
    {"applyBlockConcurrentlyAndCountSuccess",
     [](World& w) {
       const auto drops = [&](Object& each) {
         if (each.description() == "a") w.drop();
         return true;
       };
       EXPECT_EQ(applyBlockConcurrentlyAndCountSuccess(*w.array, drops), 2u);
     }},
};

TEST(Callbacks, MayReleaseTheLastReferenceToEverything) {
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    World world;
    each.run(world);
    EXPECT_GE(world.drops, 1);
  }
}

}  // namespace
}  // namespace tq
