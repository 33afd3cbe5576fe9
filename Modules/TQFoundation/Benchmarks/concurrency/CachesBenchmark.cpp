// Cache hits: one look-up among 100 owners with 10 keys each. Stores among 100 and 100,000 owners.
// One read of a computed lazy value. One object vended by a pool and recycled.

#include <benchmark/benchmark.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <TQFoundation/concurrency/caches/TQCache.h>
#include <TQFoundation/concurrency/caches/TQObjectPool.h>
#include <TQFoundation/concurrency/locks/TQLazyVar.h>
#include <TQFoundation/objects/String.h>

namespace {

using namespace tq;

constexpr std::size_t kOwners = 100, kKeys = 10;

struct Data {
  Data() {
    for (std::size_t i = 0; i < kOwners; ++i) {
      owners.push_back(String::stringWithUTF8("owner " + std::to_string(i)));
    }
    for (std::size_t i = 0; i < kKeys; ++i) {
      keys.push_back(String::stringWithUTF8("key " + std::to_string(i)));
    }
    for (const auto& owner : owners) {
      for (const auto& key : keys) {
        cache->setCachedObject(owner, *owner, *key);
        map[owner.get()].emplace(std::string(key->view()), owner);
      }
    }
  }
  std::vector<Ref<String>> owners, keys;
  Ref<TQCache> cache = TQCache::init();
  std::shared_mutex mutex;
  std::unordered_map<const Object*, std::unordered_map<std::string, Ref<Object>>> map;
};

Data& data() {
  static Data& all = *new Data;
  return all;
}

void BM_CacheHit_TQ(benchmark::State& state) {
  Data& all = data();
  std::size_t i = static_cast<std::size_t>(state.thread_index()) * 37;
  for (auto _ : state) {
    ++i;
    benchmark::DoNotOptimize(
        all.cache->cachedObjectForOwner(*all.owners[i % kOwners], *all.keys[i % kKeys]));
  }
}

void BM_CacheHit_SharedMutexMap(benchmark::State& state) {
  Data& all = data();
  std::vector<std::string> keys;
  for (const auto& key : all.keys) keys.emplace_back(key->view());
  std::size_t i = static_cast<std::size_t>(state.thread_index()) * 37;
  for (auto _ : state) {
    ++i;
    const std::shared_lock guard(all.mutex);
    Ref<Object> found =
        all.map.find(all.owners[i % kOwners].get())->second.find(keys[i % kKeys])->second;
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_CacheHit_SharedMutexMap)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK(BM_CacheHit_TQ)->ThreadRange(1, 2)->UseRealTime();

// Stores under one key of one owner among many. With loss:1, an unrelated object that was held
// weakly is destroyed before each store; the peer does the same.
void lose(benchmark::State& state) {
  if (state.range(1) == 0) return;
  const Ref<String> lost = String::stringWithUTF8("lost");
  const Weak<String> weak = lost;
  benchmark::DoNotOptimize(weak.expired());
}

void BM_CacheStore_TQ(benchmark::State& state) {
  const auto cache = TQCache::init();
  const auto key = String::stringWithUTF8("key");
  std::vector<Ref<String>> owners;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    owners.push_back(String::stringWithUTF8("owner " + std::to_string(i)));
    cache->setCachedObject(key, *owners.back(), *key);
  }
  for (auto _ : state) {
    lose(state);
    cache->setCachedObject(key, *owners[0], *key);
  }
}
void BM_CacheStore_SharedMutexMap(benchmark::State& state) {
  std::shared_mutex mutex;
  std::unordered_map<const Object*, std::unordered_map<std::string, Ref<Object>>> map;
  const Ref<Object> object = String::stringWithUTF8("object");
  std::vector<Ref<String>> owners;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    owners.push_back(String::stringWithUTF8("owner " + std::to_string(i)));
    map[owners.back().get()]["key"] = object;
  }
  for (auto _ : state) {
    lose(state);
    const std::unique_lock guard(mutex);
    map[owners[0].get()]["key"] = object;
  }
}
BENCHMARK(BM_CacheStore_SharedMutexMap)
    ->ArgNames({"owners", "loss"})
    ->ArgsProduct({{100, 100'000}, {0, 1}});
BENCHMARK(BM_CacheStore_TQ)->ArgNames({"owners", "loss"})->ArgsProduct({{100, 100'000}, {0, 1}});

int result = 0;

void BM_ComputedLazily_AcquireLoad(benchmark::State& state) {
  std::atomic<void*> value{&result};
  for (auto _ : state) benchmark::DoNotOptimize(value.load(std::memory_order_acquire));
}
void BM_ComputedLazily_CallOnce(benchmark::State& state) {
  std::once_flag once;
  void* value = nullptr;
  for (auto _ : state) {
    std::call_once(once, [&] { value = &result; });
    benchmark::DoNotOptimize(value);
  }
}
void BM_ComputedLazily_TQ(benchmark::State& state) {
  TQLazyVar* const var = TQLazyVarCreate();
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        TQLazyVarGetOrCalculateValue(var, 0, []() -> void* { return &result; }));
  }
  TQLazyVarFree(var);
}
BENCHMARK(BM_ComputedLazily_AcquireLoad);
BENCHMARK(BM_ComputedLazily_CallOnce);
BENCHMARK(BM_ComputedLazily_TQ);

void BM_PoolVendRecycle_MutexVector(benchmark::State& state) {
  std::mutex mutex;
  std::vector<Ref<Object>> idle(1, data().owners[0]);
  for (auto _ : state) {
    Ref<Object> object;
    {
      const std::scoped_lock guard(mutex);
      object = std::move(idle.back());
      idle.pop_back();
    }
    const std::scoped_lock guard(mutex);
    idle.push_back(std::move(object));
  }
}
void BM_PoolVendRecycle_TQ(benchmark::State& state) {
  const auto pool =
      TQObjectPool::initWithObjectCreatorBlock([] { return String::stringWithUTF8("pooled"); });
  for (auto _ : state) pool->recycleObject(pool->vendObject());
}
BENCHMARK(BM_PoolVendRecycle_MutexVector);
BENCHMARK(BM_PoolVendRecycle_TQ);

}  // namespace
