// One lock and unlock around a plain increment, by one thread and by two; the same for a counter, a
// push and pop, and entering again what the thread is in already.

#include <benchmark/benchmark.h>
#include <pthread.h>

#include <boost/lockfree/stack.hpp>
#include <mutex>
#include <vector>

#include <TQFoundation/concurrency/Atomic.h>
#include <TQFoundation/concurrency/ReadWriteLock.h>
#include <TQFoundation/concurrency/TQAtomicStack.h>
#include <TQFoundation/concurrency/UnfairLock.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/ObjectMonitor.h>

namespace {

using namespace tq;

long guarded = 0;  // what the section changes, whoever guards it

template <class L>
void BM_Lock_Section(benchmark::State& state) {
  static L lock;
  for (auto _ : state) {
    lock.lock();
    benchmark::DoNotOptimize(++guarded);
    lock.unlock();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_TEMPLATE(BM_Lock_Section, std::mutex)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK_TEMPLATE(BM_Lock_Section, UnfairLock)->Threads(1)->Threads(2)->UseRealTime();

void BM_RecursiveMutex_Reenter(benchmark::State& state) {
  std::recursive_mutex mutex;
  mutex.lock();
  for (auto _ : state) {
    mutex.lock();
    benchmark::DoNotOptimize(++guarded);
    mutex.unlock();
  }
  mutex.unlock();
}
BENCHMARK(BM_RecursiveMutex_Reenter);

void BM_Monitor_Reenter(benchmark::State& state) {
  const Ref<Object> object = String::stringWithUTF8("monitored");
  monitorEnter(object.get());
  for (auto _ : state) {
    monitorEnter(object.get());
    benchmark::DoNotOptimize(++guarded);
    monitorExit(object.get());
  }
  monitorExit(object.get());
}
BENCHMARK(BM_Monitor_Reenter);

pthread_rwlock_t bare = PTHREAD_RWLOCK_INITIALIZER;

void BM_PosixRWLock_Section(benchmark::State& state) {
  const bool writes = state.range(0) != 0;
  for (auto _ : state) {
    writes ? pthread_rwlock_wrlock(&bare) : pthread_rwlock_rdlock(&bare);
    benchmark::DoNotOptimize(guarded);
    pthread_rwlock_unlock(&bare);
  }
}
BENCHMARK(BM_PosixRWLock_Section)
    ->ArgName("write")
    ->Arg(0)
    ->Arg(1)
    ->ThreadRange(1, 2)
    ->UseRealTime();

void BM_ReadWriteLock_Section(benchmark::State& state) {
  static const Ref<ReadWriteLock> lock = makeRef<ReadWriteLock>();
  const bool writes = state.range(0) != 0;
  const auto section = [] { benchmark::DoNotOptimize(guarded); };
  for (auto _ : state) {
    writes ? lock->protectedWrite(section) : lock->protectedRead(section);
  }
}
BENCHMARK(BM_ReadWriteLock_Section)
    ->ArgName("write")
    ->Arg(0)
    ->Arg(1)
    ->ThreadRange(1, 2)
    ->UseRealTime();

const Ref<Object>& element() {
  static const auto& one = *new Ref<Object>(String::stringWithUTF8("element"));
  return one;
}

// The peers hand out a reference too: that is what a user of theirs would do with the pointer.
void BM_MutexVector_PushPop(benchmark::State& state) {
  static std::mutex mutex;
  static std::vector<Object*> stack;
  Object* const object = element().get();
  for (auto _ : state) {
    {
      const std::scoped_lock guard(mutex);
      stack.push_back(object);
    }
    const std::scoped_lock guard(mutex);
    if (stack.empty()) continue;
    benchmark::DoNotOptimize(Ref<Object>(stack.back()));
    stack.pop_back();
  }
}
BENCHMARK(BM_MutexVector_PushPop)->ThreadRange(1, 2)->UseRealTime();

void BM_BoostStack_PushPop(benchmark::State& state) {
  static boost::lockfree::stack<Object*> stack(1024);
  Object* const object = element().get();
  for (auto _ : state) {
    stack.push(object);
    Object* popped = nullptr;
    if (stack.pop(popped)) benchmark::DoNotOptimize(Ref<Object>(popped));
  }
}
BENCHMARK(BM_BoostStack_PushPop)->ThreadRange(1, 2)->UseRealTime();

void BM_TQAtomicStack_PushPop(benchmark::State& state) {
  static TQAtomicStack stack;
  Object& object = *element();
  for (auto _ : state) {
    stack.push(object);
    benchmark::DoNotOptimize(stack.pop());
  }
}
BENCHMARK(BM_TQAtomicStack_PushPop)->ThreadRange(1, 2)->UseRealTime();

void BM_MutexCounter_Increment(benchmark::State& state) {
  static std::mutex mutex;
  static long counter = 0;
  for (auto _ : state) {
    const std::scoped_lock guard(mutex);
    benchmark::DoNotOptimize(++counter);
  }
}
BENCHMARK(BM_MutexCounter_Increment)->ThreadRange(1, 2)->UseRealTime();

void BM_Atomic_Increment(benchmark::State& state) {
  static Atomic<long> counter(0);
  for (auto _ : state) counter.increment();
}
BENCHMARK(BM_Atomic_Increment)->ThreadRange(1, 2)->UseRealTime();

}  // namespace
