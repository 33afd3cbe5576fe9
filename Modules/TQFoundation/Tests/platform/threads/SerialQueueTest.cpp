#include <TQFoundation/platform/threads/SerialQueue.h>

#include <TQFoundation/platform/threads/ThreadSystem.h>
#include <TQFoundation/platform/threads/detail/FifoLock.h>

#include "support/Test.h"

namespace {

// The lock of a serial queue, which reports the number of waiting threads.
TEST(SerialQueue, ServesThreadsInTheOrderOfTheirArrival) {
  detail::FifoLock<detail::ThreadSystem> lock;
  std::vector<int> order;
  std::vector<std::jthread> threads;
  {
    const std::scoped_lock held(lock);
    for (int i = 0; i < 12; ++i) {
      threads.emplace_back([&, i] {
        const std::scoped_lock guard(lock);
        order.push_back(i);
      });
      while (lock.waiting() != threads.size()) std::this_thread::yield();
    }
  }
  threads.clear();
  EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(lock.waiting(), 0u);
}

}  // namespace
