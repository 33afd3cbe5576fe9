// Maps over an array, in wall-clock time. On the worker pool, compared with tbb::parallel_for over
// the same block into the same kind of array, and with a plain loop. On an operation queue,
// compared with a GLib thread pool that gets one element at a time. With expensive = 0 the block
// returns its element; with expensive = 1 it computes for about a microsecond.

#include <benchmark/benchmark.h>
#include <glib.h>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include <TQFoundation/concurrency/work/ConcurrentMap.h>
#include <TQFoundation/concurrency/work/TQConcurrentMapOperation.h>

namespace {

using namespace tq;

Ref<Array> elements(std::int64_t count) {
  std::vector<Ref<Object>> all;
  for (std::int64_t i = 0; i < count; ++i) all.push_back(Number::numberWith(i));
  return Array::arrayWithObjects(std::move(all));
}

ArrayMapBlock blockOf(std::int64_t isDear) {
  if (isDear == 0) return [](Object& object) { return share(object); };
  return [](Object& object) {
    double x = 0.1;
    for (int i = 0; i < 100; ++i) x = std::sin(x);
    benchmark::DoNotOptimize(x);
    return share(object);
  };
}

template <class Map>
void mapArray(benchmark::State& state, const Map& map) {
  const Ref<Array> array = elements(state.range(0));
  const ArrayMapBlock block = blockOf(state.range(1));
  for (auto _ : state) benchmark::DoNotOptimize(map(*array, block));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ParallelMap_TQ(benchmark::State& state) { mapArray(state, concurrentMap); }

void BM_ParallelMap_Loop(benchmark::State& state) { mapArray(state, std::mem_fn(&Array::map)); }

void BM_ParallelMap_TBB(benchmark::State& state) {
  mapArray(state, [](const Array& array, const ArrayMapBlock& block) {
    const auto objects = array.objects();
    std::vector<Ref<Object>> answers(objects.size());
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, objects.size()),
                      [&](const tbb::blocked_range<std::size_t>& part) {
                        for (std::size_t i = part.begin(); i != part.end(); ++i) {
                          answers[i] = block(*objects[i]);
                        }
                      });
    return Array::arrayWithObjects(std::move(answers));
  });
}

const std::vector<std::vector<std::int64_t>> kMaps = {{10, 1'000, 100'000}, {0, 1}};
BENCHMARK(BM_ParallelMap_Loop)->ArgNames({"n", "expensive"})->ArgsProduct(kMaps)->UseRealTime();
BENCHMARK(BM_ParallelMap_TBB)->ArgNames({"n", "expensive"})->ArgsProduct(kMaps)->UseRealTime();
BENCHMARK(BM_ParallelMap_TQ)->ArgNames({"n", "expensive"})->ArgsProduct(kMaps)->UseRealTime();

/// Waits for the end of an asynchronous map.
class Done {
 public:
  void say() {
    const std::scoped_lock guard(mutex_);
    isDone_ = true;
    condition_.notify_one();
  }
  void wait() {
    std::unique_lock guard(mutex_);
    condition_.wait(guard, [&] { return isDone_; });
    isDone_ = false;
  }

 private:
  std::mutex mutex_;
  std::condition_variable condition_;
  bool isDone_ = false;
};

constexpr int kThreads = 2;

void BM_BoundedMap_TQ(benchmark::State& state) {
  Done done;
  mapArray(state, [&](const Array& array, const ArrayMapBlock& block) {
    Ref<Array> answers;
    mapWithMaxConcurrencyCount(array, kThreads, block, [&](Ref<Array> results) {
      answers = std::move(results);
      done.say();
    });
    done.wait();
    return answers;
  });
}

struct PoolMap {
  const ArrayMapBlock* block;
  std::span<const Ref<Object>> objects;
  std::vector<Ref<Object>> answers;
  std::atomic<std::size_t> left;
  Done* done;
};

void BM_BoundedMap_GThreadPool(benchmark::State& state) {
  Done done;
  mapArray(state, [&](const Array& array, const ArrayMapBlock& block) {
    PoolMap map{&block, array.objects(), std::vector<Ref<Object>>(array.count()), array.count(),
                &done};
    const auto run = [](gpointer index, gpointer context) {
      PoolMap& all = *static_cast<PoolMap*>(context);
      const std::size_t i = GPOINTER_TO_SIZE(index) - 1;
      all.answers[i] = (*all.block)(*all.objects[i]);
      if (--all.left == 0) all.done->say();
    };
    GThreadPool* const pool = g_thread_pool_new(run, &map, kThreads, FALSE, nullptr);
    for (std::size_t i = 1; i <= array.count(); ++i) {
      g_thread_pool_push(pool, GSIZE_TO_POINTER(i), nullptr);
    }
    done.wait();
    g_thread_pool_free(pool, FALSE, TRUE);
    return Array::arrayWithObjects(std::move(map.answers));
  });
}

const std::vector<std::vector<std::int64_t>> kBounded = {{10'000}, {0, 1}};
BENCHMARK(BM_BoundedMap_GThreadPool)
    ->ArgNames({"n", "expensive"})
    ->ArgsProduct(kBounded)
    ->UseRealTime();
BENCHMARK(BM_BoundedMap_TQ)->ArgNames({"n", "expensive"})->ArgsProduct(kBounded)->UseRealTime();

}  // namespace
