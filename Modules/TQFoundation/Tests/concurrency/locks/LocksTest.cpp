#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <stdexcept>
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
#include <TQFoundation/platform/threads/SerialQueue.h>

namespace tq {
namespace {

static_assert(Lockable<UnfairLock> && Lockable<Lock> && Lockable<RecursiveLock> &&
              Lockable<ReadWriteLock::ReadLock> && Lockable<ReadWriteLock::WriteLock> &&
              Lockable<ObjectSynchronizer> && Lockable<Unsynchronized> && Lockable<std::mutex>);
static_assert(SynchronizationPrimitive<SerialQueue> && !Lockable<SerialQueue>);
static_assert(SynchronizationPrimitive<UnfairLock> && !SynchronizationPrimitive<std::string>);

// Runs a test body over one of every kind.
template <class Body>
void withEveryPrimitive(Body body) {
  UnfairLock unfair;
  Lock lock;
  RecursiveLock recursive;
  ObjectSynchronizer monitor(String::stringWithUTF8("monitored"));
  SerialQueue queue("a queue");
  auto readWrite = makeRef<ReadWriteLock>();
  auto write = readWrite->write();
  body("UnfairLock", unfair);
  body("Lock", lock);
  body("RecursiveLock", recursive);
  body("ObjectSynchronizer", monitor);
  body("SerialQueue", queue);
  body("WriteLock", write);
}

TEST(Locks, PassResultsAndErrorsThroughAndAreFreeAfterwards) {
  const auto body = [](const char* name, auto& primitive) {
    SCOPED_TRACE(name);
    EXPECT_EQ(sync(primitive, [] { return std::make_unique<int>(7); }).operator*(), 7);
    int target = 0;
    int& same = sync(primitive, [&]() -> int& { return target; });
    EXPECT_EQ(&same, &target);
    EXPECT_THROW(sync(primitive, []() -> int { throw std::runtime_error("inside"); }),
                 std::runtime_error);
    std::jthread([&] { sync(primitive, [&] { ++target; }); }).join();  // would wait if not free
    EXPECT_EQ(target, 1);
  };
  withEveryPrimitive(body);
  Unsynchronized none;
  body("Unsynchronized", none);
  auto lock = makeRef<ReadWriteLock>();
  auto read = lock->read();
  body("ReadLock", read);
  EXPECT_THROW(lock->protectedWrite([] { throw 1; }), int);
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

TEST(Locks, MonitorsAreRecursiveOnePerObjectAndGoWhenUnused) {
  const Ref<Object> one = String::stringWithUTF8("one");
  const Ref<Object> two = String::stringWithUTF8("one");  // equal, and yet another object
  ObjectSynchronizer first(one), second(one), other(two), none(nullptr);
  ASSERT_EQ(monitorCount(), 0u);
  sync(first, [&] {
    sync(second, [&] {
      sync(other,
           [&] { sync(first, [&] { sync(none, [&] { EXPECT_EQ(monitorCount(), 2u); }); }); });
      // Inside out: the outer monitor is left before the inner one.
      monitorEnter(two.get());
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
  EXPECT_EQ(monitorExit(one.get()), -1);
  EXPECT_EQ(monitorCount(), 0u);
}

TEST(Locks, MisuseStopsWithAClearText) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto killed = testing::KilledBySignal(SIGABRT);
  UnfairLock lock;
  EXPECT_EXIT((lock.lock(), lock.lock()), killed, "Trying to recursively lock an os_unfair_lock");
#if !defined(TQ_THREAD_SANITIZER)  // which stops at these by itself, before the lock does
  EXPECT_EXIT(lock.unlock(), killed, "Unlock of an os_unfair_lock not owned by current thread");
  EXPECT_EXIT((lock.lock(), std::jthread([&] { lock.unlock(); }).join()), killed,
              "Unlock of an os_unfair_lock not owned by current thread");
#endif
  const char* const recursion = "dispatch_sync called on queue already owned by current thread";
  SerialQueue queue;
  EXPECT_EXIT(queue.sync([&] { queue.sync([] {}); }), killed, recursion);
  Atomic<int> box(0);
  EXPECT_EXIT(box.mutate([&](int&) { box.increment(); }), killed, recursion);
#ifndef NDEBUG
  auto readWrite = makeRef<ReadWriteLock>();
  EXPECT_EXIT((readWrite->lockForWrite(), readWrite->lockForRead()), killed, "for writing already");
#endif
}

TEST(Locks, SerialQueueServesInOrderOfArrival) {
  SerialQueue queue("in order");
  std::vector<int> order;
  std::vector<std::jthread> threads;
  queue.sync([&] {
    for (int i = 0; i < 12; ++i) {
      threads.emplace_back([&, i] { queue.sync([&, i] { order.push_back(i); }); });
      while (queue.waitingCount() != static_cast<std::uint32_t>(i + 1)) std::this_thread::yield();
    }
  });
  threads.clear();
  for (int i = 0; i < 12; ++i) EXPECT_EQ(order.at(static_cast<std::size_t>(i)), i);
}

TEST(Atomic, TripsAndTheirGaps) {
  Atomic<std::string> box("a");
  EXPECT_EQ(box.mutate([](std::string& text) { return (text += "b").size(); }), 2u);
  box.modify([&](std::string& copy) {
    box.setWrappedValue("lost");  // between the two trips
    copy += "c";
  });
  EXPECT_EQ(box.projectedValue().wrappedValue(), "abc");
  EXPECT_THROW(box.modify([](std::string& copy) {
    copy = "never written";
    throw 1;
  }),
               int);
  EXPECT_THROW(box.mutate([](std::string&) { throw 1; }), int);
  EXPECT_EQ(box.wrappedValue(), "abc");
}

TEST(TQAtomicStack, IsLastInFirstOutAndOwnsNothing) {
  const Ref<Object> a = String::stringWithUTF8("a");
  const Ref<Object> b = String::stringWithUTF8("b");
  TQAtomicStack stack, other;
  for (int i = 0; i < 5000; ++i) stack.push(*a);  // more nodes than a thread keeps, left behind
  stack.push(*b);
  other.push(*b);
  EXPECT_EQ(b->referenceCount(), 1u);
  EXPECT_EQ(stack.pop(), b);
  EXPECT_EQ(stack.pop(), a);
  EXPECT_EQ(other.pop(), b);
  EXPECT_EQ(other.pop(), nullptr);
}

}  // namespace
}  // namespace tq
