// One lock and unlock around an increment, with one thread and with two. Likewise one increment of
// an atomic counter, one push and pop, and one recursive lock of a held monitor.

#include <benchmark/benchmark.h>
#include <pthread.h>

#include <boost/lockfree/stack.hpp>
#include <mutex>
#include <vector>

#include <TQFoundation/concurrency/locks/Atomic.h>
#include <TQFoundation/concurrency/locks/ReadWriteLock.h>
#include <TQFoundation/concurrency/locks/TQAtomicStack.h>
#include <TQFoundation/concurrency/locks/UnfairLock.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/threads/ObjectMonitor.h>

namespace {

using namespace tq;

long guarded = 0;  // changed in the critical section

template <class L>
void BM_LockSection(benchmark::State& state) {
  static L lock;
  for (auto _ : state) {
    lock.lock();
    benchmark::DoNotOptimize(++guarded);
    lock.unlock();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LockSection<std::mutex>)
    ->Name("BM_LockSection_Mutex")
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();
BENCHMARK(BM_LockSection<UnfairLock>)
    ->Name("BM_LockSection_TQ")
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();

void BM_Reenter_RecursiveMutex(benchmark::State& state) {
  std::recursive_mutex mutex;
  mutex.lock();
  for (auto _ : state) {
    mutex.lock();
    benchmark::DoNotOptimize(++guarded);
    mutex.unlock();
  }
  mutex.unlock();
}
BENCHMARK(BM_Reenter_RecursiveMutex);

void BM_Reenter_TQ(benchmark::State& state) {
  const Ref<Object> object = String::stringWithUTF8("monitored");
  monitorEnter(object.get());
  for (auto _ : state) {
    monitorEnter(object.get());
    benchmark::DoNotOptimize(++guarded);
    monitorExit(object.get());
  }
  monitorExit(object.get());
}
BENCHMARK(BM_Reenter_TQ);

pthread_rwlock_t bare = PTHREAD_RWLOCK_INITIALIZER;

void BM_ReadWriteSection_Posix(benchmark::State& state) {
  const bool writes = state.range(0) != 0;
  for (auto _ : state) {
    writes ? pthread_rwlock_wrlock(&bare) : pthread_rwlock_rdlock(&bare);
    benchmark::DoNotOptimize(guarded);
    pthread_rwlock_unlock(&bare);
  }
}
BENCHMARK(BM_ReadWriteSection_Posix)
    ->ArgName("write")
    ->Arg(0)
    ->Arg(1)
    ->ThreadRange(1, 2)
    ->UseRealTime();

void BM_ReadWriteSection_TQ(benchmark::State& state) {
  static const Ref<ReadWriteLock> lock = makeRef<ReadWriteLock>();
  const bool writes = state.range(0) != 0;
  const auto section = [] { benchmark::DoNotOptimize(guarded); };
  for (auto _ : state) {
    writes ? lock->protectedWrite(section) : lock->protectedRead(section);
  }
}
BENCHMARK(BM_ReadWriteSection_TQ)
    ->ArgName("write")
    ->Arg(0)
    ->Arg(1)
    ->ThreadRange(1, 2)
    ->UseRealTime();

const Ref<Object>& element() {
  static const auto& one = *new Ref<Object>(String::stringWithUTF8("element"));
  return one;
}

// The peers also return a reference, as their users would do with the pointer.
void BM_StackPushPop_MutexVector(benchmark::State& state) {
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
BENCHMARK(BM_StackPushPop_MutexVector)->ThreadRange(1, 2)->UseRealTime();

void BM_StackPushPop_Boost(benchmark::State& state) {
  static boost::lockfree::stack<Object*> stack(1024);
  Object* const object = element().get();
  for (auto _ : state) {
    stack.push(object);
    Object* popped = nullptr;
    if (stack.pop(popped)) benchmark::DoNotOptimize(Ref<Object>(popped));
  }
}
BENCHMARK(BM_StackPushPop_Boost)->ThreadRange(1, 2)->UseRealTime();

void BM_StackPushPop_TQ(benchmark::State& state) {
  static TQAtomicStack stack;
  Object& object = *element();
  for (auto _ : state) {
    stack.push(object);
    benchmark::DoNotOptimize(stack.pop());
  }
}
BENCHMARK(BM_StackPushPop_TQ)->ThreadRange(1, 2)->UseRealTime();

void BM_AtomicIncrement_MutexCounter(benchmark::State& state) {
  static std::mutex mutex;
  static long counter = 0;
  for (auto _ : state) {
    const std::scoped_lock guard(mutex);
    benchmark::DoNotOptimize(++counter);
  }
}
BENCHMARK(BM_AtomicIncrement_MutexCounter)->ThreadRange(1, 2)->UseRealTime();

void BM_AtomicIncrement_TQ(benchmark::State& state) {
  static Atomic<long> counter(0);
  for (auto _ : state) counter.increment();
}
BENCHMARK(BM_AtomicIncrement_TQ)->ThreadRange(1, 2)->UseRealTime();

}  // namespace
