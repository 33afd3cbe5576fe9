#include <semaphore>

#include <TQFoundation/concurrency/locks/LazyObject.h>
#include <TQFoundation/concurrency/locks/TQLazyVar.h>
#include <TQFoundation/objects/String.h>

#include "support/Threads.h"

namespace {

using Owned = std::unique_ptr<TQLazyVar, decltype(&TQLazyVarFree)>;
Owned makeVar() { return {TQLazyVarCreate(), &TQLazyVarFree}; }

TEST(TQLazyVar, ComputesOnceUnlessTheBlockReturnsNullOrThrows) {
  const Owned var = makeVar();
  int result = 0, runs = 0;
  EXPECT_EQ(TQLazyVarGetValue(var.get()), nullptr);
  const auto none = [&]() -> void* { return ++runs, nullptr; };
  EXPECT_EQ(TQLazyVarGetOrCalculateValue(var.get(), 0, none), nullptr);
  const auto fails = [&]() -> void* { throw ++runs; };
  EXPECT_THROW(TQLazyVarGetOrCalculateValue(var.get(), 0, fails), int);
  EXPECT_EQ(TQLazyVarGetValue(var.get()), nullptr);
  for (int i = 0; i < 2; ++i) {
    const auto computes = [&]() -> void* {
      EXPECT_EQ(TQLazyVarGetValue(var.get()), var.get());
      return ++runs, &result;
    };
    EXPECT_EQ(TQLazyVarGetOrCalculateValue(var.get(), 0, computes), &result);
  }
  EXPECT_EQ(runs, 3);
  EXPECT_EQ(TQLazyVarGetValue(var.get()), &result);
  TQLazyVarFree(nullptr);
}

TEST(TQLazyVar, StopsWithoutRecordOrBlock) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto killed = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(TQLazyVarGetOrCalculateValue(nullptr, 0, []() -> void* { return nullptr; }), killed,
              "\\(var\\) != nil.*TQLazyVarGetOrCalculateValue.*"
              "Modules/TQFoundation/Source/TQLazyVar,");
  const Owned var = makeVar();
  EXPECT_EXIT(TQLazyVarGetOrCalculateValue(var.get(), 0, std::function<void*()>()), killed,
              "\\(calculationBlock\\) != nil");
}

TEST(TQLazyVar, AWaitingThreadGetsTheResult) {
  const Owned var = makeVar();
  std::atomic<bool> isWaiting{false};
  void* got = nullptr;
  const auto never = []() -> void* { throw std::logic_error("computed twice"); };
  std::jthread other;
  TQLazyVarGetOrCalculateValue(var.get(), 0, [&]() -> void* {
    other = std::jthread([&] {
      isWaiting = true;
      got = TQLazyVarGetOrCalculateValue(var.get(), 60, never);
    });
    while (!isWaiting) std::this_thread::yield();
    return &got;
  });
  other.join();
  EXPECT_EQ(got, &got);
}

// Takes a second: the time-out has whole seconds of the real-time clock.
TEST(TQLazyVarStress, OtherThreadsWaitOrTimeOut) {
  const Owned var = makeVar();
  int result = 0;
  std::binary_semaphore begun(0), goOn(0);
  std::jthread computing([&] {
    TQLazyVarGetOrCalculateValue(var.get(), 0, [&]() -> void* {
      begun.release();
      goOn.acquire();
      return &result;
    });
  });
  begun.acquire();
  const auto never = []() -> void* { throw std::logic_error("computed twice"); };
  const auto waits = [&](int forEver) {
    EXPECT_EQ(TQLazyVarGetOrCalculateValue(var.get(), forEver, never), &result);
  };
  const std::jthread first(waits, 0), second(waits, -1);  // both wait before it is stored
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(TQLazyVarGetOrCalculateValue(var.get(), 1, never), nullptr);
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
  EXPECT_GT(waited.count(), 0.9);
  goOn.release();
}

TEST(TQLazyVarStress, OneOfManyComputes) {
  constexpr int kThreads = 8, kRounds = 300;
  std::vector<Owned> vars;
  for (int i = 0; i < kRounds; ++i) vars.push_back(makeVar());
  std::vector<std::atomic<int>> runs(kRounds);
  std::barrier round(kThreads);
  test::onThreads(kThreads, [&] {
    for (std::size_t r = 0; r < kRounds; ++r) {
      round.arrive_and_wait();
      // The first computation returns null in every third round, and a thread computes again.
      const auto compute = [&]() -> void* {
        return ++runs[r] == 1 && r % 3 == 0 ? nullptr : &runs[r];
      };
      void* value = nullptr;
      while (!value) value = TQLazyVarGetOrCalculateValue(vars[r].get(), 0, compute);
      EXPECT_EQ(value, &runs[r]);
    }
  });
  for (std::size_t r = 0; r < kRounds; ++r) EXPECT_EQ(runs[r], r % 3 == 0 ? 2 : 1);
}

TEST(LazyObject, OwnsItsObject) {
  const auto object = String::of("lazy");
  {
    LazyObject<String> lazy;
    EXPECT_EQ(lazy.getOrCreate([] { return Ref<String>(); }), nullptr);
    EXPECT_EQ(lazy.getOrCreate([&] { return object; }), object);
    EXPECT_EQ(lazy.get(), object);
    EXPECT_EQ(object->referenceCount(), 2u);
  }
  EXPECT_EQ(object->referenceCount(), 1u);
}

}  // namespace
