// Threads fight for locks; totals must add up and the locks must end as they began.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <barrier>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <TQFoundation/concurrency/locks/Atomic.h>
#include <TQFoundation/concurrency/locks/Lockable.h>
#include <TQFoundation/concurrency/locks/ObjectSynchronizer.h>
#include <TQFoundation/concurrency/locks/ReadWriteLock.h>
#include <TQFoundation/concurrency/locks/TQAtomicStack.h>
#include <TQFoundation/concurrency/locks/UnfairLock.h>
#include <TQFoundation/objects/String.h>

#include "support/Numbers.h"
#include "support/Threads.h"

namespace tq {
namespace {

struct Grid {
  std::size_t groups;  // independent locks
  int threads;         // per group
  int rounds;
};
constexpr Grid kGrid[] = {{1, 2, 20'000}, {1, 8, 2'000}, {4, 2, 2'000}};

// `makeLock(group)` gives each thread its own view of the group's lock.
template <class MakeLock>
void fight(const char* name, MakeLock makeLock) {
  for (const Grid& grid : kGrid) {
    SCOPED_TRACE(std::string(name) + ", threads " + std::to_string(grid.threads));
    std::vector<long> totals(grid.groups);  // plain: races would show
    const int count = grid.threads * static_cast<int>(grid.groups);
    std::barrier start(count);
    test::onThreads(count, [&](int t) {
      const std::size_t group = static_cast<std::size_t>(t) % grid.groups;
      auto&& lock = makeLock(group);
      start.arrive_and_wait();
      for (int i = 0; i < grid.rounds; ++i) sync(lock, [&] { ++totals[group]; });
    });
    for (const long total : totals) EXPECT_EQ(total, long{grid.threads} * grid.rounds);
  }
}

TEST(LocksStress, TotalsAddUp) {
  std::array<UnfairLock, 4> unfair;
  fight("UnfairLock", [&](std::size_t g) -> UnfairLock& { return unfair[g]; });
  std::array<SerialQueue, 4> queues;
  fight("SerialQueue", [&](std::size_t g) -> SerialQueue& { return queues[g]; });
  for (SerialQueue& queue : queues) EXPECT_EQ(queue.waitingCount(), 0u);
  std::array<Ref<Object>, 4> objects;
  for (auto& object : objects) object = String::stringWithUTF8("monitored");
  fight("ObjectSynchronizer", [&](std::size_t g) { return ObjectSynchronizer(objects[g]); });
  EXPECT_EQ(monitorCount(), 0u);
  std::array<Ref<ReadWriteLock>, 4> readWrite;
  for (auto& lock : readWrite) lock = makeRef<ReadWriteLock>();
  fight("WriteLock", [&](std::size_t g) { return readWrite[g]->write(); });
}

TEST(LocksStress, ReadersSeeWholeWritesAndAtomicChangesAreNotLost) {
  auto lock = makeRef<ReadWriteLock>();
  long left = 0, right = 0;
  Atomic<int> number(0);
  test::onThreads(3, [&](int t) {
    for (int i = 0; i < 5'000; ++i) {
      if (t == 0) lock->protectedWrite([&] { ++left, ++right; });
      EXPECT_TRUE(lock->protectedRead([&] { return left == right; }));
      number.increment();
      number.mutate([](int& value) { value += 2; });
      number.decrement();
    }
  });
  EXPECT_EQ(left, 5'000);
  EXPECT_EQ(number.wrappedValue(), 3 * 5'000 * 2);
}

TEST(LocksStress, StackHandsEveryElementToOneThread) {
  constexpr int kThreads = 4, kElements = 64, kRounds = 20'000;
  const Ref<Array> elements = test::numbers(kElements);
  TQAtomicStack stack;
  for (const Object& element : *elements) stack.push(const_cast<Object&>(element));
  // A popped element belongs to its popper until it is pushed again: nobody else may have it.
  std::vector<int> holds(kElements);
  test::onThreads(kThreads, [&] {
    for (int i = 0; i < kRounds; ++i) {
      const Ref<Object> object = stack.pop();
      if (object == nullptr) continue;
      const auto index = static_cast<std::size_t>(test::valueOf(*object));
      EXPECT_EQ(++holds[index], 1);  // plain: also a race if two had it
      --holds[index];
      stack.push(*object);
    }
  });
  std::set<Object*> seen;
  while (const Ref<Object> object = stack.pop()) EXPECT_TRUE(seen.insert(object.get()).second);
  EXPECT_EQ(seen.size(), elements->count());
}

}  // namespace
}  // namespace tq
