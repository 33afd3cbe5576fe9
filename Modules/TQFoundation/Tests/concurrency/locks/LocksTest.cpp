#include <TQFoundation/TQFoundation.h>

#include "support/Numbers.h"
#include "support/Threads.h"

namespace {

static_assert(Lockable<UnfairLock> && Lockable<Lock> && Lockable<RecursiveLock> &&
              Lockable<ReadWriteLock::ReadLock> && Lockable<ReadWriteLock::WriteLock> &&
              Lockable<ObjectSynchronizer> && Lockable<Unsynchronized> && Lockable<std::mutex>);
static_assert(SynchronizationPrimitive<SerialQueue> && !Lockable<SerialQueue>);
static_assert(SynchronizationPrimitive<UnfairLock> && !SynchronizationPrimitive<std::string>);

TEST(Locks, ReturnResultsPropagateErrorsAndAreFreeAfterwards) {
  const auto check = [](const char* name, auto&& primitive) {
    SCOPED_TRACE(name);
    EXPECT_EQ(*sync(primitive, [] { return std::make_unique<int>(7); }), 7);
    int target = 0;
    int& same = sync(primitive, [&]() -> int& { return target; });
    EXPECT_EQ(&same, &target);
    EXPECT_THROW(sync(primitive, []() -> int { throw std::runtime_error("inside"); }),
                 std::runtime_error);
    std::jthread([&] { sync(primitive, [&] { ++target; }); }).join();  // blocks if it is not free
    EXPECT_EQ(target, 1);
  };
  const auto readWrite = makeRef<ReadWriteLock>();
  check("UnfairLock", UnfairLock());
  check("Lock", Lock());
  check("RecursiveLock", RecursiveLock());
  check("ObjectSynchronizer", ObjectSynchronizer(String::of("monitored")));
  check("SerialQueue", SerialQueue("a queue"));
  check("ReadLock", readWrite->read());
  check("WriteLock", readWrite->write());
  check("Unsynchronized", Unsynchronized());
  EXPECT_THROW(readWrite->protectedWrite([] { throw 1; }), int);
}

TEST(Locks, ReadersShareAndViewsKeepTheLockAlive) {
  auto lock = makeRef<ReadWriteLock>();
  auto read = lock->read();
  EXPECT_EQ(lock->referenceCount(), 2u);
  lock = nullptr;
  read.lock();
  std::jthread([&] { EXPECT_EQ(sync(read, [] { return 1; }), 1); }).join();
  read.unlock();
}

// The internal tests count the monitors.
TEST(Locks, MonitorsAreRecursiveAndOnePerObject) {
  const Ref<Object> one = String::of("one");
  const Ref<Object> two = String::of("one");  // equal, but another object
  ObjectSynchronizer first(one), second(one), none(nullptr);
  sync(first, [&] {
    sync(second, [&] {
      monitorEnter(two.get());
      sync(none, [&] { EXPECT_EQ(monitorExit(nullptr), 0); });
      // The outer monitor is exited before the inner one.
      EXPECT_EQ(monitorExit(one.get()), 0);
      EXPECT_EQ(monitorEnter(one.get()), 0);
      EXPECT_EQ(monitorExit(two.get()), 0);
    });
    std::jthread([&] {
      EXPECT_EQ(monitorExit(one.get()), -1) << "held by another thread";
      EXPECT_EQ(monitorEnter(two.get()), 0) << "the equal object is free";
      EXPECT_EQ(monitorExit(two.get()), 0);
    }).join();
  });
}

TEST(Locks, MisuseStopsWithAClearMessage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto killed = testing::KilledBySignal(SIGABRT);
  UnfairLock lock;
  EXPECT_EXIT((lock.lock(), lock.lock()), killed, "Trying to recursively lock an os_unfair_lock");
#if !defined(TQ_THREAD_SANITIZER)  // which reports these before the lock does
  const char* const notOwned = "Unlock of an os_unfair_lock not owned by current thread";
  EXPECT_EXIT(lock.unlock(), killed, notOwned);
  EXPECT_EXIT((lock.lock(), std::jthread([&] { lock.unlock(); }).join()), killed, notOwned);
#endif
  const char* const recursion = "dispatch_sync called on queue already owned by current thread";
  SerialQueue queue;
  EXPECT_EXIT(queue.sync([&] { queue.sync([] {}); }), killed, recursion);
  Atomic<int> box(0);
  EXPECT_EXIT(box.mutate([&](int&) { box.increment(); }), killed, recursion);
  auto readWrite = makeRef<ReadWriteLock>();
  const char* const owned = "for writing already";
  EXPECT_EXIT((readWrite->lockForWrite(), readWrite->lockForRead()), killed, owned);
  EXPECT_EXIT((readWrite->lockForWrite(), readWrite->lockForWrite()), killed, owned);
  EXPECT_EXIT((readWrite->lockForRead(), readWrite = nullptr), killed, "the lock is not held");
}

TEST(Atomic, MutateIsAtomicAndModifyIsTwoAccesses) {
  Atomic<std::string> box("a");
  EXPECT_EQ(box.mutate([](std::string& text) { return (text += "b").size(); }), 2u);
  box.modify([&](std::string& copy) {
    box.setWrappedValue("lost");  // between the two accesses
    copy += "c";
  });
  EXPECT_EQ(box.projectedValue().wrappedValue(), "abc");
  const auto fails = [](std::string& copy) { throw copy = "never written"; };
  EXPECT_THROW(box.modify(fails), std::string);
  EXPECT_THROW(box.mutate([](std::string&) { throw 1; }), int);
  EXPECT_EQ(box.wrappedValue(), "abc");
}

TEST(TQAtomicStack, IsLastInFirstOutAndOwnsNothing) {
  const Ref<Object> a = String::of("a");
  const Ref<Object> b = String::of("b");
  TQAtomicStack stack, other;
  for (int i = 0; i < 5000; ++i) stack.push(*a);  // more nodes than a thread keeps
  stack.push(*b);
  other.push(*b);
  EXPECT_EQ(b->referenceCount(), 1u);
  EXPECT_EQ(stack.pop(), b);
  EXPECT_EQ(stack.pop(), a);
  EXPECT_EQ(other.pop(), b);
  EXPECT_EQ(other.pop(), nullptr);
}

TEST(TQAtomicStack, WorksInDestructorsAtTheEndOfAThread) {
  struct Late {
    std::function<void()> act;
    ~Late() { act(); }
  };
  const Ref<Object> a = String::of("a");
  TQAtomicStack stack;
  const auto use = [&] {
    for (int i = 0; i < 100; ++i) stack.push(*a);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(stack.pop(), a);
  };
  std::jthread([&] {
    static thread_local const Late late{use};  // destroyed after the nodes that the thread keeps
    use();
  }).join();
  EXPECT_EQ(stack.pop(), nullptr);
}

// Threads compete for locks. Totals must add up, and the locks must end in their initial state.
// `makeLock(group)` gives each thread its own view of the group's lock.
template <class MakeLock>
void fight(const char* name, MakeLock makeLock) {
  // The number of independent locks, of threads that share one, and of their rounds.
  for (const auto& [groups, threads, rounds] :
       Rows<std::size_t, int, int>{{1, 2, 20'000}, {1, 8, 2'000}, {4, 2, 2'000}}) {
    SCOPED_TRACE(std::string(name) + ", threads " + std::to_string(threads));
    std::vector<long> totals(groups);  // not atomic: the thread sanitizer sees races
    const int count = threads * static_cast<int>(groups);
    std::barrier start(count);
    onThreads(count, [&, last = rounds](int t) {
      const std::size_t group = static_cast<std::size_t>(t) % totals.size();
      auto&& lock = makeLock(group);
      start.arrive_and_wait();
      for (int i = 0; i < last; ++i) sync(lock, [&] { ++totals[group]; });
    });
    EXPECT_EQ(totals, std::vector<long>(groups, long{threads} * rounds));
  }
}

TEST(LocksStress, TotalsAddUp) {
  UnfairLock unfair[4];
  fight("UnfairLock", [&](std::size_t g) -> UnfairLock& { return unfair[g]; });
  SerialQueue queues[4];
  fight("SerialQueue", [&](std::size_t g) -> SerialQueue& { return queues[g]; });
  Ref<ReadWriteLock> readWrite[4];
  for (auto& lock : readWrite) lock = makeRef<ReadWriteLock>();
  fight("WriteLock", [&](std::size_t g) { return readWrite[g]->write(); });
}

TEST(LocksStress, ReadersSeeWholeWritesAndAtomicChangesAreNotLost) {
  auto lock = makeRef<ReadWriteLock>();
  long left = 0, right = 0;
  Atomic<int> number(0);
  onThreads(3, [&](int t) {
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
  const Ref<Array> elements = numbers(kElements);
  TQAtomicStack stack;
  for (const Object& element : *elements) stack.push(const_cast<Object&>(element));
  // A popped element belongs to its thread until it is pushed again.
  std::vector<int> holds(kElements);
  onThreads(kThreads, [&] {
    for (int i = 0; i < kRounds; ++i) {
      const Ref<Object> object = stack.pop();
      if (object == nullptr) continue;
      const auto index = static_cast<std::size_t>(valueOf(*object));
      EXPECT_EQ(++holds[index], 1);  // not atomic: also a race if two threads had it
      --holds[index];
      stack.push(*object);
    }
  });
  std::set<Object*> seen;
  while (const Ref<Object> object = stack.pop()) EXPECT_TRUE(seen.insert(object.get()).second);
  EXPECT_EQ(seen.size(), elements->count());
}

}  // namespace
