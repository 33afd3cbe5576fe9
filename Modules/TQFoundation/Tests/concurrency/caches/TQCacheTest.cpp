#include <TQFoundation/concurrency/caches/TQCache.h>

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <TQFoundation/concurrency/caches/TQCacheDeferredCreation.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/threads/ObjectMonitor.h>

#include "support/Threads.h"

namespace tq {
namespace {

Ref<String> text(std::string_view characters) { return String::stringWithUTF8(characters); }

// Calls back when it goes.
struct Farewell final : Subclass<Farewell> {
  static constexpr std::string_view className = "Farewell";
  explicit Farewell(std::function<void()> atEnd) : atEnd_(std::move(atEnd)) {}
  ~Farewell() override { atEnd_(); }

 private:
  std::function<void()> atEnd_;
};

TEST(TQCache, StoresByOwnerIdentityAndKeyEquality) {
  const auto cache = TQCache::init();
  const auto one = text("owner"), two = text("owner");  // equal, and yet two owners
  for (const char* key : {"k", "l", "m"}) cache->setCachedObject(text(key), *one, *text(key));
  EXPECT_TRUE(cache->cachedObjectForOwner(*one, *text("l"))->isEqual(*text("l")));
  EXPECT_EQ(cache->cachedObjectForOwner(*two, *text("l")), nullptr);
  for (const char* key : {"k", "l", "m"}) cache->setCachedObject(nullptr, *one, *text(key));
  EXPECT_EQ(cache->rawObjectForOwner(*one, *text("k")), nullptr);
  EXPECT_EQ(cache->count(), 1u) << "an empty dictionary keeps its owner";
  cache->removeCachedObjectForOwner(*two, *text("k"));  // nothing there: no fault

  const auto three = text("three");
  for (const auto& owner : {one, two, three}) cache->setCachedObject(owner, *owner, *text("k"));
  cache->removeCachedObjectsForOwner(*one);
  EXPECT_THAT(cache->allOwners(), testing::UnorderedElementsAre(two, three));
  const Ref<Object> kept[] = {two};
  cache->removeCachedObjectsExceptForOwners(kept);
  EXPECT_THAT(cache->allOwners(), testing::ElementsAre(two));
  cache->removeAllCachedObjects();
  EXPECT_EQ(cache->count(), 0u);
}

TEST(TQCache, OwnersTakeTheirEntriesWithThem) {
  const auto key = text("k");
  const auto weak = TQCache::init();
  int farewells = 0;
  for (int i = 0; i < 100; ++i) {  // the allocator hands out the same addresses again
    const auto owner = text("owner " + std::to_string(i));
    EXPECT_EQ(weak->rawObjectForOwner(*owner, *key), nullptr) << "inherited";
    weak->setCachedObject(makeRef<Farewell>([&] {
                            ++farewells;
                            (void)weak->count();  // the lock must be free
                          }),
                          *owner, *key);
    EXPECT_EQ(farewells, i) << "the earlier owner's entry goes with the next change";
  }
  EXPECT_EQ(weak->count(), 0u);
  const auto strong = TQCache::initWithOwnerRetentionPolicy(1);
  for (int i = 0; i < 100; ++i) strong->setCachedObject(key, *text("owner"), *key);
  EXPECT_EQ(strong->count(), 100u);
  EXPECT_EQ(farewells, 100);
}

TEST(TQCache, CreationFollowsWhatTheBlockDoes) {
  const auto cache = TQCache::init();
  const auto owner = text("owner"), key = text("k"), other = text("l");
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, [] { return Ref<Object>(); }), nullptr);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), nullptr);
  const auto fails = []() -> Ref<Object> { throw std::runtime_error("creation"); };
  EXPECT_THROW(cache->cachedObjectForOwner(*owner, *key, fails), std::runtime_error);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), nullptr) << "no dead placeholder";
  EXPECT_EQ(monitorCount(), 0u);

  int runs = 0;
  const auto creates = [&]() -> Ref<Object> {
    ++runs;
    // Re-entrant: another key of the same owner, and a look at its own.
    EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key), nullptr);
    return cache->cachedObjectForOwner(*owner, *other, [] { return text("inner"); });
  };
  const Ref<Object> made = cache->cachedObjectForOwner(*owner, *key, creates);
  EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), made) << "not a placeholder";
  EXPECT_EQ(cache->cachedObjectForOwner(*owner, *key, creates), made);
  cache->populateCacheForObjectWithOwner(*owner, *key, creates);
  EXPECT_EQ(runs, 1);

  // Stored meanwhile by somebody else: the later entry stays. Removed meanwhile: stored all the
  // same.
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
}

TEST(TQCacheDeferredCreation, UnblockingFormDoesNotWait) {
  const auto object = text("object");
  EXPECT_EQ(TQCache_selfOrDeferredObject(object), object);
  EXPECT_EQ(TQCache_unblockingSelfOrDeferredObject(object), object);
  Ref<TQCacheDeferredCreation> placeholder;
  placeholder = TQCacheDeferredCreation::createWithBlock([&] {
    EXPECT_EQ(TQCache_selfOrDeferredObject(placeholder), nullptr) << "its own thread comes through";
    std::jthread([&] {
      EXPECT_EQ(TQCache_unblockingSelfOrDeferredObject(placeholder), nullptr);
    }).join();
    return object;
  });
  EXPECT_EQ(TQCache_unblockingSelfOrDeferredObject(placeholder), object);
  EXPECT_EQ(TQCache_selfOrDeferredObject(placeholder), object);
}

TEST(TQCacheStress, SingleFlightUnder32Threads) {
  constexpr int kThreads = 32, kRounds = 40;
  const auto cache = TQCache::init();
  const auto owner = text("owner");
  std::vector<std::atomic<int>> runs(kRounds);
  std::barrier round(kThreads);
  test::onThreads(kThreads, [&] {
    for (std::size_t r = 0; r < kRounds; ++r) {
      const auto key = text("key " + std::to_string(r));
      round.arrive_and_wait();
      const auto create = [&]() -> Ref<Object> {
        const int run = ++runs[r];
        if (r % 4 == 1 && run == 1) throw std::runtime_error("the first creation");
        if (r % 4 == 2) std::this_thread::yield();
        const auto inner = text("inner " + std::to_string(r));
        if (r % 4 == 3) return cache->cachedObjectForOwner(*owner, *inner, [&] { return inner; });
        return text("made");
      };
      Ref<Object> object;
      while (object == nullptr) {  // until some block has not thrown
        try {
          object = cache->cachedObjectForOwner(*owner, *key, create);
        } catch (const std::runtime_error&) {
        }
      }
    }
  });
  for (std::size_t r = 0; r < kRounds; ++r) EXPECT_EQ(runs[r], r % 4 == 1 ? 2 : 1) << r;
  EXPECT_EQ(monitorCount(), 0u);
}

TEST(TQCacheStress, OwnersDieWhileOthersLookAndChange) {
  const auto cache = TQCache::init();
  const auto key = text("k");
  std::atomic<int> living{0};
  test::onThreads(3, [&] {
    for (int i = 0; i < 5'000; ++i) {
      const auto owner = text("owner");
      EXPECT_EQ(cache->rawObjectForOwner(*owner, *key), nullptr);
      ++living;
      cache->setCachedObject(makeRef<Farewell>([&] { --living; }), *owner, *key);
      EXPECT_NE(cache->rawObjectForOwner(*owner, *key), nullptr);
    }
  });
  EXPECT_EQ(cache->count(), 0u);
  EXPECT_EQ(living, 0);
}

}  // namespace
}  // namespace tq
