// Explores every interleaving of two or three threads in the locks and the lock-free stack.

#include <numeric>

#include <TQFoundation/concurrency/caches/detail/SlottedLock.h>
#include <TQFoundation/concurrency/locks/detail/TaggedStack.h>
#include <TQFoundation/concurrency/locks/detail/UnfairWord.h>
#include <TQFoundation/platform/threads/detail/FifoLock.h>

#include "support/ThreadModel.h"

namespace {

void require(bool condition, const char* what) {
  if (!condition) throw ThreadModel::Violation(what);
}

// Explores threads that enter a critical section `rounds` times each. The section counts the
// threads inside, and in multiples of 256 those that have left. The last one destroys the lock,
// which must be free, while others may still be in unlock().
template <class Lock>
std::string exploreSections(std::vector<int> rounds, std::size_t* stateCount = nullptr) {
  ThreadModel model;
  for (auto& bell : ModelSystem::bells) bell.emplace(0u);
  const std::size_t first = model.cellCount();
  Lock lock;
  const std::size_t end = model.cellCount();
  ModelSystem::Word inside;
  const int total = std::accumulate(rounds.begin(), rounds.end(), 0);
  std::vector<ThreadModel::Thread> threads;
  for (const int count : rounds) {
    threads.push_back([&, count] {
      for (int i = 0; i < count; ++i) {
        lock.lock();
        require(inside.fetch_add(1) % 256 == 0, "two threads are inside");
        const bool isLast = inside.fetch_add(255) / 256 + 1 == static_cast<unsigned>(total);
        lock.unlock();
        if (!isLast) continue;
        lock.lock();
        lock.unlock();
        model.destroyCells(first, end);
      }
    });
  }
  const std::string fault = model.explore(threads);
  if (stateCount != nullptr) *stateCount = model.stateCount();
  return fault;
}

// Planted faults. The model must find each of them.
struct NeverWakes : ModelSystem {
  static void wake(const Word&, int) {}
};
struct NeverExcludes {
  void lock() {}
  void unlock() {}
};

TEST(LockModel, FindsPlantedFaults) {
  EXPECT_EQ(exploreSections<NeverExcludes>({1, 1}), "two threads are inside");
  EXPECT_EQ(exploreSections<detail::UnfairWord<NeverWakes>>({1, 1}), "threads sleep for ever");
  EXPECT_EQ(exploreSections<detail::FifoLock<NeverWakes>>({1, 1}), "threads sleep for ever");
}

TEST(LockModel, UnfairWordExcludesAndWakesInEveryInterleaving) {
  for (const auto& rounds : {std::vector{2, 2}, {1, 1, 1}}) {
    std::size_t states = 0;
    EXPECT_EQ(exploreSections<detail::UnfairWord<ModelSystem>>(rounds, &states), "");
    EXPECT_GT(states, 200u);
  }
}

// Without spinning, which only multiplies the states.
struct NeverSpins : ModelSystem {
  static constexpr int kSpins = 0;
};

TEST(LockModel, FifoLockExcludesAndWakesInEveryInterleaving) {
  std::size_t states = 0;
  EXPECT_EQ(exploreSections<detail::FifoLock<ModelSystem>>({2, 1}, &states), "");
  EXPECT_GT(states, 200u);
  EXPECT_EQ(exploreSections<detail::FifoLock<NeverSpins>>({1, 1, 1}, &states), "");
  EXPECT_GT(states, 2'000u);
}

struct TwoSlots : NeverSpins {
  static constexpr std::uint32_t kSlots = 2;
};
struct NeverWakesReaders : TwoSlots {
  static void wake(const Word& word, int count) {
    if (count == 1) word.wake(false);
  }
};
struct NeverWakesWriters : TwoSlots {
  static void wake(const Word& word, int count) {
    if (count != 1) word.wake(true);
  }
};

// What a thread does with the lock. `inner` is a read inside a read; `nested` is one inside a read
// of another lock.
enum class Use { read, inner, nested, write };

// The section of a writer must be alone; `inside` counts a writer as 100 threads.
template <class System>
std::string exploreReadersAndWriters(const std::vector<std::vector<Use>>& uses,
                                     std::size_t* stateCount = nullptr) {
  ThreadModel model;
  detail::SlottedLock<System, detail::UnfairWord<NeverSpins>> lock;
  ModelSystem::Word inside;
  const auto pass = [&](std::uint32_t amount) {
    const std::uint32_t found = inside.fetch_add(amount);
    require(amount == 1 ? found < 100 : found == 0, "a writer is not alone");
    inside.fetch_sub(amount);
  };
  std::vector<ThreadModel::Thread> threads;
  for (const std::vector<Use>& all : uses) {
    threads.push_back([&, all] {
      for (const Use use : all) {
        if (use == Use::write) {
          lock.lockForWrite();
          pass(100);
          lock.unlockForWrite();
          continue;
        }
        lock.lockForRead(use == Use::nested);
        pass(1);
        if (use == Use::inner) {
          lock.lockForRead(true);
          lock.unlockForRead();
        }
        lock.unlockForRead();
      }
    });
  }
  const std::string fault =
      model.explore(threads, [&] { require(lock.isFree(), "the lock is still held"); });
  if (stateCount != nullptr) *stateCount = model.stateCount();
  return fault;
}

TEST(LockModel, SlottedLockExcludesAndWakesInEveryInterleaving) {
  constexpr Use R = Use::read, I = Use::inner, N = Use::nested, W = Use::write;
  using Uses = std::vector<std::vector<Use>>;
  for (const Uses& uses : {Uses{{R, R}, {W}}, {{I}, {W}}, {{N}, {W}}, {{N}, {W}, {W}}}) {
    std::size_t states = 0;
    EXPECT_EQ(exploreReadersAndWriters<TwoSlots>(uses, &states), "");
    EXPECT_GT(states, 1'000u);
  }
  EXPECT_EQ(exploreReadersAndWriters<NeverWakesWriters>({{R}, {W}}), "threads sleep for ever");
  EXPECT_EQ(exploreReadersAndWriters<NeverWakesReaders>({{N}, {W}}), "threads sleep for ever");
}

constexpr std::uint32_t kNodes = 3;

struct StackModelSystem : ModelSystem {
  static inline std::array<std::optional<Word>, kNodes + 1> links;
  static Word& link(std::uint32_t node) { return *links[node]; }
};

// The same, with a head that has no tag.
struct UntaggedSystem : StackModelSystem {
  struct Word64 {
    Word64(std::uint64_t value) : cell(value) {}
    std::uint64_t load(std::memory_order = {}) const { return cell.load(); }
    bool compare_exchange_strong(std::uint64_t& expected, std::uint64_t desired) {
      return cell.compare_exchange_strong(expected, desired & 0xffffffff);
    }
    test::ModelCell<std::uint64_t> cell;
  };
};

// The first thread pops a node. The second pops two and pushes the first of them again. The third
// pops a node and pushes it again. Every node must have one owner or be on the stack once.
template <class System>
std::string exploreStack(int threadCount) {
  ThreadModel model;
  for (std::uint32_t node = 1; node <= kNodes; ++node) StackModelSystem::links[node].emplace(0u);
  detail::TaggedStack<System> stack;
  std::array<std::optional<ModelSystem::Word>, kNodes + 1> owners;
  for (auto& owner : owners) owner.emplace(0u);
  for (std::uint32_t node = kNodes; node > 0; --node) stack.push(node);

  const auto pop = [&] {
    const std::uint32_t node = stack.pop();
    if (node != 0) require(owners[node]->fetch_add(1) == 0, "a node was popped twice");
    return node;
  };
  const auto push = [&](std::uint32_t node) {
    if (node == 0) return;
    owners[node]->fetch_sub(1);
    stack.push(node);
  };
  std::vector<ThreadModel::Thread> threads = {[&] { pop(); },
                                              [&] {
                                                const std::uint32_t first = pop();
                                                pop();
                                                push(first);
                                              },
                                              [&] { push(pop()); }};
  threads.resize(static_cast<std::size_t>(threadCount));
  return model.explore(threads, [&] {
    while (pop() != 0) {
    }
    for (std::uint32_t node = 1; node <= kNodes; ++node) {
      require(owners[node]->load() == 1, "a node was lost");
    }
  });
}

TEST(LockModel, TaggedStackNeitherLosesNorDuplicatesNodes) {
  EXPECT_EQ(exploreStack<UntaggedSystem>(2), "a node was popped twice");  // the model finds ABA
  EXPECT_EQ(exploreStack<StackModelSystem>(2), "");
  EXPECT_EQ(exploreStack<StackModelSystem>(3), "");
}

}  // namespace
