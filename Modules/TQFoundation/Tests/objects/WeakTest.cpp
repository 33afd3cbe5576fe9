#include <TQFoundation/objects/Weak.h>

#include "support/Objects.h"
#include "support/Threads.h"

namespace {

class Delegate {
 public:
  virtual ~Delegate() = default;
  virtual int answer() const = 0;
};

struct Watched final : Subclass<Watched>, Delegate {
  static constexpr std::string_view className = "Watched";
  ~Watched() override {
    if (seenFromDestructor != nullptr) *seenFromDestructor = static_cast<bool>(self.lock());
    if (observesLate) self = Weak<Watched>(this);
  }
  int answer() const override { return value; }

  int value = 42;
  Weak<Watched> self;
  bool* seenFromDestructor = nullptr;
  bool observesLate = false;
};

TEST(Weak, ReadsNullFromTheLastReleaseOn) {
  Ref<Watched> object = makeRef<Watched>();
  bool seen = true;
  object->seenFromDestructor = &seen;
  object->self = object;
  const Weak<Watched> weak = object;
  Weak<Watched> copy = weak;
  const Weak<Watched> moved = std::move(copy);
  EXPECT_EQ(weak.lock(), object);
  EXPECT_FALSE(weak.expired());
  EXPECT_EQ(weak, moved);
  EXPECT_EQ(object->referenceCount(), 1u);
  object = nullptr;
  EXPECT_FALSE(seen);
  EXPECT_FALSE(weak.lock());
  EXPECT_TRUE(weak.expired());
  EXPECT_TRUE(Weak<Watched>().expired());
  EXPECT_FALSE(Weak<Watched>(nullptr).lock());
}

TEST(Weak, HoldsAnInterfaceAndKeepsItsObjectWhileLocked) {
  Ref<Watched> object = makeRef<Watched>();
  const Weak<Delegate> weak = object;
  auto held = weak.lock();
  ASSERT_TRUE(held);
  object = nullptr;
  auto moved = std::move(held);
  EXPECT_FALSE(held);  // NOLINT: its state is specified
  EXPECT_EQ(moved->answer(), 42);
  moved = held;
  EXPECT_FALSE(weak.lock());
}

TEST(Weak, DiffersFromANewObjectAtTheOldAddress) {
  Ref<Watched> object = makeRef<Watched>();
  const void* address = object.get();
  const Weak<Watched> old = object;
  object = nullptr;
  std::vector<Ref<Watched>> others;
  do {
    others.push_back(makeRef<Watched>());
  } while (others.back().get() != address && others.size() < 100'000);
  for (const Ref<Watched>& other : others) {
    EXPECT_NE(old, Weak<Watched>(other));
    EXPECT_FALSE(old.lock());
  }
}

TEST(Weak, IsRefusedInTheDestructor) {
  for (const int depth : {0, Object::kDirectReleaseDepth - 1}) {  // immediate, and deferred
    const Ref<Watched> late = makeRef<Watched>();
    Ref<Object> nest = Array::arrayWithObjects({makeRef<Watched>(), late, makeRef<Watched>()});
    for (int i = 0; i < depth; ++i) nest = Array::arrayWithObjects({nest});
    const auto destroy = [&] {
      late->observesLate = true;
      late->release();
      nest = nullptr;
    };
    EXPECT_EXIT(destroy(), testing::KilledBySignal(SIGABRT), "isBeingDestroyed") << depth;
  }
}

struct Unmade final : Subclass<Unmade> {
  static constexpr std::string_view className = "Unmade";
  explicit Unmade(Weak<Unmade>& seen) {
    seen = Weak<Unmade>(this);
    throw std::runtime_error("not made");
  }
};

TEST(Weak, ReadsNullAfterItsConstructorThrew) {
  Weak<Unmade> seen;
  EXPECT_THROW(static_cast<void>(makeRef<Unmade>(seen)), std::runtime_error);
  EXPECT_TRUE(seen.expired());
  EXPECT_FALSE(seen.lock());
}

/// Threads lock an object while another one releases it. Each result is the whole object or null.
TEST(WeakStress, LocksAgainstTheLastRelease) {
  constexpr int kRounds = 20'000, kLockers = 3;
  Ref<Watched> object;
  Weak<Watched> shared;
  std::atomic<int> round = 0;
  std::atomic<int> done = 0;
  std::atomic<std::int64_t> wrong = 0;
  const auto locker = [&] {
    for (int r = 1; r <= kRounds; ++r) {
      while (round.load() < r) std::this_thread::yield();
      const Weak<Watched> weak = shared;
      if (const Ref<Watched> held = weak.lock(); held && held->value != 42) wrong.fetch_add(1);
      done.fetch_add(1);
    }
  };
  std::vector<std::jthread> threads;
  for (int i = 0; i < kLockers; ++i) threads.emplace_back(locker);
  for (int r = 1; r <= kRounds; ++r) {
    object = makeRef<Watched>();
    shared = object;
    round.store(r);
    object = nullptr;
    while (done.load() < r * kLockers) std::this_thread::yield();
    if (!shared.expired()) wrong.fetch_add(1);
  }
  threads.clear();
  EXPECT_EQ(wrong.load(), 0);
}

TEST(RefStress, CountsOnAnyThread) {
  constexpr int kThreads = 4;
  const Ref<Watched> object = makeRef<Watched>();
  test::onThreads(kThreads, [&] {
    for (int k = 0; k < 200'000; ++k) {
      const Ref<Watched> copy = object;
      const Weak<Watched> weak = copy;
    }
  });
  EXPECT_EQ(object->referenceCount(), 1u);
}

}  // namespace
