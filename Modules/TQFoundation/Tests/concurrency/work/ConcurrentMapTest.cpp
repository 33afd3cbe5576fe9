#include <future>

#include <TQFoundation/TQFoundation.h>

#include "support/LoopbackServer.h"
#include "support/Numbers.h"
#include "support/Threads.h"

namespace {

Ref<Object> squared(Object& object) {
  return Number::numberWith(valueOf(object) * valueOf(object));
}

TEST(ConcurrentMap, ReturnsTheResultsOfTheSequentialMaps) {
  std::atomic<long> spent{0};
  for (const int count : {0, 1, 2, 7, 1'000, 20'000}) {
    for (const int cost : {0, 300}) {  // the same type of block, cheap and expensive in turns
      SCOPED_TRACE(std::to_string(count) + " elements, cost " + std::to_string(cost));
      const auto array = numbers(cost == 0 ? count : std::min(count, 1'000));
      const ArrayMapBlock block = [&spent, cost](Object& object) -> Ref<Object> {
        auto x = static_cast<double>(valueOf(object));
        for (int i = 0; i < cost; ++i) x = std::sin(x);
        if (x < -2) ++spent;
        if (valueOf(object) % 2 == 0) return squared(object);
        return valueOf(object) % 3 == 0 ? Ref<Object>(Null::null()) : nullptr;
      };
      for (const EnumerationOptions options : {0u, 1u, 2u}) {
        EXPECT_TRUE(mapWithOptions(*array, options, squared)->isEqual(*array->map(squared)));
        EXPECT_TRUE(
            compactMapWithOptions(*array, options, block)->isEqual(*array->compactMap(block)));
      }
      const ArrayPredicate even = [&](Object& object) {
        return block(object) != nullptr && valueOf(object) % 2 == 0;
      };
      EXPECT_EQ(applyBlockConcurrentlyAndCountSuccess(*array, even), (array->count() + 1) / 2);
    }
  }
}

TEST(ConcurrentMap, ExceptionsOfBlocksReachTheCaller) {
  for (const int count : {1, 2, 5'000}) {
    const auto array = numbers(count);
    const auto throwing = [&](Object& object) -> Ref<Object> {
      if (valueOf(object) == count / 2) throw std::runtime_error("in the block");
      return share(object);
    };
    const auto counted = [&](Object& object) { return throwing(object) != nullptr; };
    for (int round = 0; round < 3; ++round) {
      EXPECT_THROW((void)concurrentMap(*array, throwing), std::runtime_error);
      EXPECT_THROW((void)compactConcurrentMap(*array, throwing), std::runtime_error);
      EXPECT_THROW((void)applyBlockConcurrentlyAndCountSuccess(*array, counted),
                   std::runtime_error);
    }
    EXPECT_THROW((void)concurrentMap(*array, [](Object&) { return nullptr; }), Exception);
  }
  const auto none = Array::array();
  EXPECT_THROW((void)mapWithOptions(*none, 0, nullptr), Exception);
  EXPECT_THROW((void)compactMapWithOptions(*none, 0, nullptr), Exception);
  EXPECT_THROW((void)applyBlockConcurrentlyAndCountSuccess(*none, nullptr), Exception);
}

std::pair<Ref<Array>, std::exception_ptr> mapped(const Array& array, std::ptrdiff_t maximum,
                                                 const ArrayMapBlock& block) {
  std::promise<std::pair<Ref<Array>, std::exception_ptr>> promise;
  const ArrayMapOutcome end = [&](auto... outcome) { promise.set_value({std::move(outcome)...}); };
  mapWithMaxConcurrencyCount(array, maximum, block, end);
  return promise.get_future().get();
}

TEST(TQConcurrentMapOperation, CompletesOnceWithTheResultsInOrder) {
  for (const std::ptrdiff_t maximum : {-3, 0, 1, 2, 50}) {
    for (const int count : {0, 1, 500}) {
      std::atomic<int> running{0};
      const auto array = numbers(count);
      const auto [results, failure] = mapped(*array, maximum, [&](Object& object) -> Ref<Object> {
        const int now = ++running;
        EXPECT_TRUE(maximum <= 0 || now <= maximum) << now;
        Ref<Object> result = squared(object);
        --running;
        return result;
      });
      ASSERT_NE(results, nullptr);
      EXPECT_TRUE(results->isEqual(*array->map(squared)));
      EXPECT_EQ(failure, nullptr);
    }
  }
}

TEST(TQConcurrentMapOperation, FailuresReachTheCompletion) {
  const auto array = numbers(100);
  const auto [none, failure] = mapped(*array, 4, [](Object& object) -> Ref<Object> {
    if (valueOf(object) >= 40) throw valueOf(object);
    return squared(object);
  });
  EXPECT_EQ(none, nullptr);
  try {
    std::rethrow_exception(failure);
  } catch (std::int64_t thrown) {
    EXPECT_EQ(thrown, 40) << "the first failure in order";
  }
  const auto nulls = mapped(*array, 4, [](Object&) { return nullptr; });
  EXPECT_THROW(std::rethrow_exception(nulls.second), Exception);
  const auto ignore = [](Ref<Array>) {};
  EXPECT_THROW(mapWithMaxConcurrencyCount(*array, 1, nullptr, ignore), Exception);
  EXPECT_THROW(mapWithMaxConcurrencyCount(*array, 1, squared, ArrayMapCompletion()), Exception);
  std::promise<std::size_t> count;
  mapWithMaxConcurrencyCount(*array, 0, squared,
                             [&](Ref<Array> results) { count.set_value(results->count()); });
  EXPECT_EQ(count.get_future().get(), 100u);
}

// More blocks than cores. The last rounds follow rounds whose blocks returned at once.
TEST(ConcurrentMap, CountedBlocksMayWaitForEachOther) {
  std::barrier<> all(6);
  bool waits = false;
  const auto caller = std::this_thread::get_id();
  const ArrayPredicate block = [&](Object&) {
    if (waits) all.arrive_and_wait();
    return std::this_thread::get_id() != caller;
  };
  for (int round = 0; round < 20; ++round) {
    waits = round >= 18;
    EXPECT_EQ(applyBlockConcurrentlyAndCountSuccess(*numbers(6), block), 6u);
  }
}

// Every level waits for the level below, with a lock held. There are more waiting calls than
// workers.
TEST(ConcurrentMapStress, NestedCallsMakeProgress) {
  std::mutex locks[8];
  std::atomic<int> leaves{0};
  const auto all = numbers(8);
  const std::function<Ref<Object>(Object&, int)> nest = [&](Object& object, int depth) {
    if (depth == 0) ++leaves;
    if (depth == 0) return share(object);
    std::unique_lock<std::mutex> guard;
    if (depth == 3) guard = std::unique_lock(locks[valueOf(object) % 2]);
    const auto inner = concurrentMap(*all, [&](Object& o) { return nest(o, depth - 1); });
    EXPECT_EQ(inner->count(), 8u);
    return share(object);
  };
  test::onThreads(3, [&] {
    EXPECT_EQ(concurrentMap(*all, [&](Object& o) { return nest(o, 3); })->count(), 8u);
  });
  EXPECT_EQ(leaves, 3 * 8 * 8 * 8 * 8);
}

// The process exits while all of this is pending.
TEST(ConcurrencyDeathTest, ExitIsClean) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        parallelApply(1'000, [](std::size_t) { std::this_thread::yield(); });
        std::thread([] {
          for (;;) parallelApply(1'000, [](std::size_t) { std::this_thread::yield(); });
        }).detach();
        std::promise<void> asked;
        LoopbackServer server({{"/", [&](const Socket& socket, const LoopbackServer::Request&) {
                                  asked.set_value();
                                  static_cast<void>(socket.receive());
                                }}});
        const auto session = URLSession::sessionWithConfiguration({});
        session->dataTaskWithURL(URL::URLWithString(server.url("/")), nullptr)->resume();
        asked.get_future().wait();
        RunLoop& loop = RunLoop::main();
        Timer::scheduledTimerWithTimeInterval(
            1, [](Timer&) {}, share(loop), true);
        loop.performBlock([] {});
        mainQueueAsync([] {});
        std::thread([] { RunLoop::current().run(); }).detach();
        static std::latch never(1);
        const auto queue = OperationQueue::init();
        for (int i = 0; i < 100; ++i) queue->addOperationWithBlock([] { never.wait(); });
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^$");
}

}  // namespace
