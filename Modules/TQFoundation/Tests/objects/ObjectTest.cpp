#include <TQFoundation/objects/Object.h>

#include <unordered_set>

#include "support/Objects.h"

namespace {

struct Counted : Subclass<Counted> {
  static constexpr std::string_view className = "Counted";
  explicit Counted(int& alive, Ref<Object> next = nullptr) : alive_(alive), next_(std::move(next)) {
    ++alive_;
  }
  ~Counted() override { --alive_; }
  int& alive_;
  Ref<Object> next_;
};

struct Throwing final : Subclass<Throwing> {
  static constexpr std::string_view className = "Throwing";
  explicit Throwing(Ref<Object> held) : held_(std::move(held)) { throw std::runtime_error("no"); }
  Ref<Object> held_;
};

TEST(Ref, CountsItsHolders) {
  int alive = 0;
  Ref<Counted> a = makeRef<Counted>(alive);
  const Ref<Object> b = a;
  EXPECT_EQ(a->referenceCount(), 2u);
  EXPECT_EQ(a, refCast<Counted>(b));
  auto& same = a;
  a = same;
  a = std::move(same);
  EXPECT_EQ(b->referenceCount(), 2u);
  Counted* leaked = a.leak();
  EXPECT_FALSE(a);
  a = Ref<Counted>::adopt(leaked);
  EXPECT_EQ(share(*leaked)->referenceCount(), 3u);
  a = nullptr;
  EXPECT_EQ(alive, 1);
  EXPECT_FALSE(refCast<Null>(b));
}

TEST(Ref, LeaksNothingWhenAConstructorThrows) {
  int alive = 0;
  EXPECT_THROW((void)makeRef<Throwing>(makeRef<Counted>(alive)), std::runtime_error);
  EXPECT_EQ(alive, 0);
}

TEST(Object, ReleasesAMillionInAChain) {
  int alive = 0;
  Ref<Object> chain;
  for (int i = 0; i < 1'000'000; ++i) chain = makeRef<Counted>(alive, std::move(chain));
  EXPECT_EQ(alive, 1'000'000);
  chain = nullptr;
  EXPECT_EQ(alive, 0);
}

// Destruction is deferred inside each kind of container, for one of several elements.
TEST(Object, ReleasesAMillionNestedContainers) {
  int alive = 0;
  Ref<Object> nest = makeRef<Counted>(alive);
  for (int i = 0; i < 250'000; ++i) {
    const Ref<Object> other = makeRef<Counted>(alive);
    nest = Array::arrayWithObjects({std::move(nest), other});
    nest = Dictionary::dictionaryWithEntries({{"a", other}, {"k", std::move(nest)}});
    const Ref<MutableArray> growing = MutableArray::array();
    growing->addObject(other);
    growing->addObject(std::move(nest));
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    dictionary->setObject(growing, "k");
    nest = dictionary;
  }
  EXPECT_FALSE(nest->description().empty());  // limited in depth
  nest = nullptr;
  EXPECT_EQ(alive, 0);
}

/// Passes itself to other code from its destructor.
struct Farewell final : Subclass<Farewell> {
  static constexpr std::string_view className = "Farewell";
  explicit Farewell(Ref<Object> next = nullptr) : child(std::move(next)) {}
  ~Farewell() override {
    const Ref<Farewell> self(this);
    EXPECT_TRUE(isBeingDestroyed());
    if (keeps) new Ref<Object>(self);
    ++destroyed;
  }
  Ref<Object> child;
  static inline int destroyed = 0;
  static inline bool keeps = false;
};

struct Shown {
  virtual ~Shown() = default;
};
/// Its Object does not start where it starts.
struct Node final : Shown, Subclass<Node> {
  static constexpr std::string_view className = "Node";
  ~Node() override { ++destroyed; }
  std::vector<Ref<Node>> children;
  static inline int destroyed = 0;
};

TEST(Object, MayBeTheSecondBaseOfItsClass) {
  Ref<Node> top;
  for (int i = 0; i < 100; ++i) {
    const auto next = makeRef<Node>();
    next->children = {makeRef<Node>(), makeRef<Node>(), std::exchange(top, next)};
  }
  top = nullptr;
  EXPECT_EQ(Node::destroyed, 300);
}

TEST(Object, MayBeReferredToInItsDestructorButNotKept) {
  constexpr int kCount = 3 * Object::kDirectReleaseDepth;  // destroyed directly, and deferred
  Farewell::destroyed = 0;
  Ref<Object> chain;
  for (int i = 0; i < kCount; ++i) chain = makeRef<Farewell>(std::move(chain));
  chain = nullptr;
  EXPECT_EQ(Farewell::destroyed, kCount);
  const auto keepLast = [] {
    Farewell::keeps = true;
    static_cast<void>(makeRef<Farewell>());
  };
  EXPECT_DEATH(keepLast(), "isKeptByItsDestructor");
}

TEST(Ref, IsAKeyOfContainersAndComparesWithPointers) {
  const auto one = makeRef<Farewell>(), other = makeRef<Farewell>();
  EXPECT_TRUE(one == one.get() && other.get() == other && one != other.get() && !(one == nullptr));
  EXPECT_EQ((std::set<Ref<Farewell>>{one, other, one}).size(), 2u);
  EXPECT_EQ((std::unordered_set<Ref<Farewell>>{one, other, one}).count(other), 1u);
}

}  // namespace
