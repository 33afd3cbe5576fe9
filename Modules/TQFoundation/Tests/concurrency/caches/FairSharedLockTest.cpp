#include <TQFoundation/concurrency/caches/detail/FairSharedLock.h>

#include "support/Test.h"

namespace tq::detail {
namespace {

// The reader that came first may read again, although a writer waits. A later reader waits for the
// writer.
TEST(FairSharedLock, WritersWaitOnlyForTheReadersBeforeThem) {
  FairSharedLock lock;
  std::vector<int> order;  // guarded by the lock; the two threads append
  std::jthread writer, reader;
  {
    const FairReadLocked outer(lock);
    writer = std::jthread([&] {
      const FairWriteLocked guard(lock);
      order.push_back(1);
    });
    while (!lock.hasWaitingWriter()) std::this_thread::yield();
    reader = std::jthread([&] {
      const FairReadLocked guard(lock);
      order.push_back(2);
    });
    for (int i = 0; i < 100; ++i) std::this_thread::yield();  // gives it time to fail
    [&] {
      const FairReadLocked inner(lock);
      EXPECT_TRUE(order.empty());
    }();
  }
  writer.join();
  reader.join();
  EXPECT_EQ(order, (std::vector{1, 2}));
}

}  // namespace
}  // namespace tq::detail
