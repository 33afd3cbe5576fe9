#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include <TQFoundation/collections/RestorableValue.h>
#include <TQFoundation/concurrency/caches/TQCache.h>
#include <TQFoundation/concurrency/caches/TQObjectPool.h>
#include <TQFoundation/concurrency/work/ConcurrentMap.h>
#include <TQFoundation/concurrency/work/TQRateLimiter.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/loops/RunLoop.h>

#include "support/FailingAllocations.h"
#include "support/OnDestruction.h"

namespace tq {
namespace {

using test::failEachAllocation;

TEST(ConcurrencyFault, ACacheStoresCompletelyOrNotAtAll) {
  test::warmUpWeakReferences();
  std::vector<Ref<Object>> owners;
  for (int i = 0; i < 6; ++i) owners.push_back(String::of("owner"));
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
    const Ref<TQObjectPool> pool =
        TQObjectPool::initWithObjectCreatorBlock([]() -> Ref<Object> { return String::of("new"); });
    const ScopedValue isOpen(open, pool.get());
    std::size_t idle = 0;
    const auto count = [&] {
      std::size_t found = 0;
      pool->allObjectsWithBlock([&](std::span<const Ref<Object>> all) { found = all.size(); });
      return found;
    };
    for (; idle < 30; ++idle) pool->recycleObject(makeRef<test::OnDestruction>(callBack));
    try {
      pool->setMaximumPoolCount(10);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(pool->maximumPoolCount(), 0u);
      EXPECT_EQ(count(), idle);
      throw;
    }
    return pool->removeAllObjects().size() == 10;
  });
}

class Target final : public Subclass<Target> {
 public:
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
  std::vector<Ref<Object>> words;
  for (int i = 0; i < 40; ++i) words.push_back(String::of(std::to_string(i)));
  const Ref<Array> array = Array::arrayWithObjects(words);
  failEachAllocation([&] {
    const auto twice = concurrentMap(*array, [](Object& word) -> Ref<Object> {
      return String::of(word.description() + word.description());
    });
    return twice->count() == 40 && twice->objectAtIndex(39).description() == "3939";
  });
}

}  // namespace
}  // namespace tq
