#include <TQFoundation/TQFoundation.h>

#include "support/OnDestruction.h"
#include "support/Threads.h"

namespace {

Ref<String> text(std::string_view characters) { return String::stringWithUTF8(characters); }

TEST(TQCache, StoresByOwnerIdentityAndKeyEquality) {
  const auto cache = TQCache::init();
  const auto one = text("owner"), two = text("owner");  // equal, but two owners
  const Ref<String> keys[] = {text("k"), text("l"), text("m")};
  for (const auto& key : keys) cache->setCachedObject(key, *one, *key);
  EXPECT_EQ(cache->cachedObjectForOwner(*one, *text("l")), keys[1]);
  EXPECT_EQ(cache->cachedObjectForOwner(*two, *text("l")), nullptr);
  for (const auto& key : keys) cache->setCachedObject(nullptr, *one, *key);
  EXPECT_EQ(cache->rawObjectForOwner(*one, *text("k")), nullptr);
  EXPECT_EQ(cache->count(), 1u) << "an empty dictionary keeps its owner";
  cache->removeCachedObjectForOwner(*two, *text("k"));  // ignored

  const auto three = text("three");
  for (const auto& owner : {one, two, three}) cache->setCachedObject(owner, *owner, *text("k"));
  cache->removeCachedObjectsForOwner(*one);
  EXPECT_THAT(cache->allOwners(), UnorderedElementsAre(two, three));
  const Ref<Object> kept[] = {two};
  cache->removeCachedObjectsExceptForOwners(kept);
  EXPECT_THAT(cache->allOwners(), ElementsAre(two));
  cache->removeAllCachedObjects();
  EXPECT_EQ(cache->count(), 0u);
}

TEST(TQCache, EntriesEndWithTheirOwners) {
  const auto key = text("k");
  const auto weak = TQCache::init();
  int released = 0;
  for (int i = 0; i < 100; ++i) {  // the allocator reuses addresses
    const auto owner = text("owner " + std::to_string(i));
    EXPECT_EQ(weak->rawObjectForOwner(*owner, *key), nullptr) << "inherited";
    const auto release = [&] {
      ++released;
      (void)weak->count();  // must not deadlock
    };
    weak->setCachedObject(makeRef<OnDestruction>(release), *owner, *key);
    EXPECT_EQ(released, i) << "the next change releases the entry of the previous owner";
  }
  EXPECT_EQ(weak->count(), 0u);
  weak->removeAllCachedObjects();
  EXPECT_EQ(released, 100);

  // Each change examines a few owners, so that its cost does not depend on their number.
  std::vector<Ref<String>> owners;
  const auto living = text("living");
  weak->setCachedObject(key, *living, *key);
  for (int i = 0; i < 1000; ++i) owners.push_back(text(std::to_string(i)));
  for (const auto& owner : owners) {
    weak->setCachedObject(makeRef<OnDestruction>([&] { ++released; }), *owner, *key);
  }
  owners.clear();
  EXPECT_EQ(weak->count(), 1u);
  EXPECT_THAT(weak->allOwners(), ElementsAre(living));
  for (int changes = 1, before = 0; released < 1100 && changes <= 1000; ++changes) {
    before = released;
    weak->setCachedObject(key, *living, *key);
    EXPECT_LE(released, before + 8);
  }
  EXPECT_EQ(released, 1100);

  const auto strong = TQCache::initWithOwnerRetentionPolicy(1);
  for (int i = 0; i < 100; ++i) strong->setCachedObject(key, *text("owner"), *key);
  EXPECT_EQ(strong->count(), 100u);
}

TEST(TQCache, CreationsMayReturnNullThrowAndCallBack) {
  const auto cache = TQCache::init();
  const auto owner = text("owner"), key = text("k"), other = text("l");
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, [] { return Ref<Object>(); }), nullptr);
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, nullptr), nullptr) << "an empty block";
  EXPECT_EQ(cache->blockingCachedObjectForOwner(*owner, *key, nullptr), nullptr);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), nullptr);
  const auto fails = []() -> Ref<Object> { throw std::runtime_error("creation"); };
  EXPECT_THROW(cache->cachedObjectForOwner(*owner, *key, fails), std::runtime_error);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), nullptr) << "no placeholder is left";
  EXPECT_EQ(monitorExit(owner.get()), -1) << "its monitor was exited";

  int runs = 0;
  const auto creates = [&]() -> Ref<Object> {
    ++runs;
    // Re-entrant: reads its own key and creates another key of the same owner.
    EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key), nullptr);
    return cache->cachedObjectForOwner(*owner, *other, [] { return text("inner"); });
  };
  const Ref<Object> made = cache->cachedObjectForOwner(*owner, *key, creates);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), made) << "not a placeholder";
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, creates), made);
  cache->populateCacheForObjectWithOwner(*owner, *key, creates);
  EXPECT_EQ(runs, 1);

  // An entry that is stored during the creation stays. If the key is removed during the creation,
  // the object is stored anyway.
  cache->removeAllCachedObjects();
  const auto later = text("later");
  cache->populateCacheForObjectWithOwner(*owner, *key, [&] {
    cache->setCachedObject(later, *owner, *key);
    return text("stale");
  });
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), later);
  cache->populateCacheForObjectWithOwner(*owner, *other, [&] {
    cache->removeCachedObjectsForOwner(*owner);
    return later;
  });
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *other), later);

  const auto placeholder = TQCacheDeferredCreation::createWithBlock([&] { return later; });
  cache->setCachedObject(placeholder, *owner, *key);
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, creates), later);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), later) << "not the host's placeholder";
}

/// A key that calls back when it is copied, which is when an entry is made.
struct Interrupting final : Subclass<Interrupting> {
  static constexpr std::string_view className = "Interrupting";
  Ref<Object> copy() const override {
    if (const auto once = std::exchange(onCopy, nullptr)) std::jthread(once).join();
    return share(const_cast<Interrupting&>(*this));
  }
  mutable std::function<void()> onCopy;
};

TEST(TQCache, WhatAnotherThreadStoresBeforeTheBlockRunsIsKept) {
  const auto cache = TQCache::init();
  const auto owner = text("owner"), stored = text("stored");
  const auto key = makeRef<Interrupting>();
  key->onCopy = [&] { cache->setCachedObject(stored, *owner, *key); };
  const auto create = [] { return ADD_FAILURE(), text("created"); };
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, create), stored);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), stored);
}

TEST(TQCacheDeferredCreation, TheUnblockingFormDoesNotWait) {
  const auto object = text("object");
  EXPECT_EQ(TQCache_selfOrDeferredObject(object), object);
  EXPECT_EQ(TQCache_unblockingSelfOrDeferredObject(object), object);
  Ref<TQCacheDeferredCreation> placeholder;
  placeholder = TQCacheDeferredCreation::createWithBlock([&] {
    EXPECT_EQ(TQCache_selfOrDeferredObject(placeholder), nullptr)
        << "the creating thread does not wait";
    std::jthread([&] {
      EXPECT_EQ(TQCache_unblockingSelfOrDeferredObject(placeholder), nullptr);
    }).join();
    return object;
  });
  EXPECT_EQ(TQCache_unblockingSelfOrDeferredObject(placeholder), object);
  EXPECT_EQ(TQCache_selfOrDeferredObject(placeholder), object);
}

TEST(TQCacheStress, SingleFlightUnder32Threads) {
  constexpr int kThreads = 32, kRounds = 80;
  const auto cache = TQCache::init();
  const auto owner = text("owner");
  std::vector<std::atomic<int>> runs(kRounds);
  std::barrier round(kThreads);
  onThreads(kThreads, [&] {
    for (std::size_t r = 0; r < kRounds; ++r) {
      const auto key = text("key " + std::to_string(r));
      round.arrive_and_wait();
      const auto create = [&]() -> Ref<Object> {
        const int run = ++runs[r];
        if (r % 4 == 1 && run == 1) return nullptr;  // the next block runs as well
        if (r % 4 == 2) std::this_thread::yield();
        const auto inner = text("inner " + std::to_string(r));
        if (r % 4 == 3) return cache->cachedObjectForOwner(*owner, *inner, [&] { return inner; });
        return text("made");
      };
      const auto get = [&] {
        return r < kRounds / 2 ? cache->cachedObjectForOwner(*owner, *key, create)
                               : cache->blockingCachedObjectForOwner(*owner, *key, create);
      };
      while (get() == nullptr) {
      }
    }
  });
  for (std::size_t r = 0; r < kRounds; ++r) EXPECT_EQ(runs[r], r % 4 == 1 ? 2 : 1) << r;
}

// Each thread's block throws the thread's number or makes an object. Each caller gets its own
// block's exception, or an object.
TEST(TQCacheStress, FailuresReachTheCallerOfTheirBlockAndNoOther) {
  constexpr int kThreads = 6, kRounds = 300;
  const auto cache = TQCache::init();
  const auto owner = text("owner"), key = text("key");
  std::barrier round(kThreads);
  onThreads(kThreads, [&](int thread) {
    for (int r = 0; r < kRounds; ++r) {
      round.arrive_and_wait();
      if (thread == 0) cache->removeAllCachedObjects();
      round.arrive_and_wait();
      int thrown = -1;
      try {
        const auto made = cache->cachedObjectForOwner(*owner, *key, [&]() -> Ref<Object> {
          std::this_thread::yield();
          if ((thread + r) % 2 != 0) return text("made");
          throw thrown = thread;
        });
        EXPECT_TRUE(made != nullptr && thrown == -1);
      } catch (int thrower) {
        EXPECT_TRUE(thrower == thread && thrown == thread);
      }
    }
  });
}

TEST(TQCacheStress, OwnersAreDestroyedWhileOtherThreadsUseTheCache) {
  const auto cache = TQCache::init();
  const auto key = text("k");
  std::atomic<int> living{0};
  onThreads(3, [&] {
    for (int i = 0; i < 5'000; ++i) {
      const auto owner = text("owner");
      EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), nullptr);
      ++living;
      cache->setCachedObject(makeRef<OnDestruction>([&] { --living; }), *owner, *key);
      EXPECT_NE(cache->rawObjectForOwner(*owner, *key), nullptr);
    }
  });
  cache->removeAllCachedObjects();
  EXPECT_EQ(living, 0);
}

TEST(TQObjectPool, KeepsUpToItsLimitAndCreatesWhenEmpty) {
  EXPECT_DEATH(ObjectPool<String>(nullptr), "creatorBlock != nullptr");
  int created = 0;
  const auto pool =
      TQObjectPool::initWithObjectCreatorBlock([&] { return ++created, text("new"); });
  const auto a = text("a"), b = text("b"), c = text("c");
  for (const auto& object : {a, a, b, c}) pool->recycleObject(object);
  pool->recycleObject(nullptr);
  pool->allObjectsWithBlock([&](std::span<const Ref<Object>> idle) {
    EXPECT_THAT(idle, UnorderedElementsAre(a, b, c));
    pool->recycleObject(a);  // may call the pool
  });
  pool->setMaximumPoolCount(2);
  EXPECT_EQ(pool->removeAllObjects().size(), 2u);
  for (const auto& object : {a, b, c}) pool->recycleObject(object);
  EXPECT_EQ(c->referenceCount(), 1u) << "released";
  EXPECT_THAT((std::vector{pool->vendObject(), pool->vendObject()}), UnorderedElementsAre(a, b));
  EXPECT_EQ(created, 0);
  EXPECT_NE(pool->vendObject(), pool->vendObject());
  EXPECT_EQ(created, 2);
  pool->recycleObject(a);
  pool->setMaximumPoolCount(0);
  EXPECT_EQ(a->referenceCount(), 1u) << "0 empties the pool, then removes the limit";
  for (const auto& object : {a, b, c}) pool->recycleObject(object);
  const Ref<Object> vended = pool->vendObject();
  for (const auto& object : {a, b, c}) pool->recycleObject(object);
  EXPECT_EQ(pool->removeAllObjects().size(), 3u);
  EXPECT_EQ(a->referenceCount() + b->referenceCount() + c->referenceCount(), 4u) << "and vended";
}

TEST(TQObjectPoolStress, ThreadsNeverShareAnObject) {
  const auto pool = TQObjectPool::initWithObjectCreatorBlock([] { return text("pooled"); });
  pool->setMaximumPoolCount(3);
  onThreads(4, [&] {
    for (int i = 0; i < 5'000; ++i) {
      Ref<Object> object = pool->vendObject();
      EXPECT_EQ(object->referenceCount(), 1u);
      pool->recycleObject(std::move(object));
    }
  });
  EXPECT_LE(pool->removeAllObjects().size(), 3u);
}

struct OneInt {
  using Value = int;
  void store(std::optional<int> value) { kept = value; }
  std::optional<int> retrieve() { return kept; }
  std::optional<int> kept;
};

TEST(ValueCache, CreatesMissingValuesAlsoThroughTheWrapper) {
  OneInt plain;
  EXPECT_EQ(retrieve(plain, [] { return 3; }), 3);
  EXPECT_EQ(retrieve(plain, [] { return 4; }), 3);
  AnyValueCache<int> any(plain);
  AnyValueCache<int> same = any;
  same.store(std::nullopt);
  EXPECT_EQ(any.retrieve(), std::nullopt);
  EXPECT_THROW(any.retrieve([]() -> int { throw 1; }), int);
  EXPECT_EQ(any.retrieve([] { return 5; }), 5);
  EXPECT_EQ(same.retrieve(), 5);
  EXPECT_EQ(plain.kept, 3) << "the wrapper has its own copy";
}

struct Palette final : Subclass<Palette, TQSingleton> {
  static constexpr std::string_view className = "TestPalette";
};

TEST(TQSingleton, IsSharedUntilReplacedOrReset) {
  const auto first = TQSingleton::sharedInstance<Palette>();
  EXPECT_EQ(TQSingleton::sharedInstance<Palette>(), first);
  const auto second = TQSingleton::init<Palette>();
  EXPECT_EQ(TQSingleton::sharedInstance<Palette>(), second);
  first->awakeFromNib();
  EXPECT_EQ(TQSingleton::sharedInstance<Palette>(), first);
  TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Palette>();
  EXPECT_EQ(first->referenceCount(), 1u);
  EXPECT_NE(TQSingleton::sharedInstance<Palette>(), first);
  TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Palette>();
}

struct Impostor final : Subclass<Impostor, TQSingleton> {
  static constexpr std::string_view className = "TestPalette";
};
struct Impatient final : Subclass<Impatient, TQSingleton> {
  static constexpr std::string_view className = "TestImpatient";
  Impatient() { static_cast<void>(TQSingleton::sharedInstance<Impatient>()); }
};

TEST(TQSingletonDeathTest, RecursionAndEqualNamesStopTheProcess) {
  EXPECT_DEATH(static_cast<void>(TQSingleton::sharedInstance<Impatient>()), "while it is created");
  const auto palette = TQSingleton::sharedInstance<Palette>();
  EXPECT_DEATH(static_cast<void>(TQSingleton::sharedInstance<Impostor>()), "another class");
  EXPECT_DEATH(static_cast<void>(TQSingleton::init<Impostor>()), "another class");
  TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Palette>();
}

}  // namespace
