// The pool, the caches of one value, singletons and map tables.

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <TQFoundation/concurrency/caches/TQObjectPool.h>
#include <TQFoundation/concurrency/caches/TQSingleton.h>
#include <TQFoundation/concurrency/caches/ValueCache.h>
#include <TQFoundation/concurrency/locks/ResettableLazy.h>
#include <TQFoundation/objects/MapTable.h>
#include <TQFoundation/objects/String.h>

#include "support/Threads.h"

namespace tq {
namespace {

Ref<String> text(std::string_view characters) { return String::stringWithUTF8(characters); }

TEST(TQObjectPool, KeepsUpToItsLimitAndCreatesWhenEmpty) {
  int created = 0;
  const auto pool =
      TQObjectPool::initWithObjectCreatorBlock([&] { return ++created, text("new"); });
  const auto a = text("a"), b = text("b"), c = text("c");
  for (const auto& object : {a, a, b, c}) pool->recycleObject(object);
  pool->recycleObject(nullptr);
  pool->allObjectsWithBlock([&](std::span<const Ref<Object>> idle) {
    EXPECT_THAT(idle, testing::UnorderedElementsAre(a, b, c));
    pool->recycleObject(a);  // may call back in
  });
  pool->setMaximumPoolCount(2);
  EXPECT_EQ(pool->removeAllObjects().size(), 2u);
  for (const auto& object : {a, b, c}) pool->recycleObject(object);
  EXPECT_EQ(c->referenceCount(), 1u) << "dropped";
  EXPECT_THAT((std::vector{pool->vendObject(), pool->vendObject()}),
              testing::UnorderedElementsAre(a, b));
  EXPECT_EQ(created, 0);
  EXPECT_NE(pool->vendObject(), pool->vendObject());
  EXPECT_EQ(created, 2);
  pool->recycleObject(a);
  pool->setMaximumPoolCount(0);
  EXPECT_EQ(a->referenceCount(), 1u) << "0 empties the pool, then lifts the limit";
  for (const auto& object : {a, b, c}) pool->recycleObject(object);
  EXPECT_EQ(pool->removeAllObjects().size(), 3u);
}

TEST(TQObjectPoolStress, NobodySharesAnObject) {
  const auto pool = TQObjectPool::initWithObjectCreatorBlock([] { return text("pooled"); });
  pool->setMaximumPoolCount(3);
  test::onThreads(4, [&] {
    for (int i = 0; i < 5'000; ++i) {
      Ref<Object> object = pool->vendObject();
      EXPECT_EQ(object->referenceCount(), 1u);
      pool->recycleObject(std::move(object));
    }
  });
  EXPECT_LE(pool->removeAllObjects().size(), 3u);
}

struct OneInt {
  using Value = int;
  void store(std::optional<int> value) { kept = value; }
  std::optional<int> retrieve() { return kept; }
  std::optional<int> kept;
};

TEST(ValueCache, CreatesWhatIsMissingThroughTheBoxToo) {
  OneInt plain;
  EXPECT_EQ(retrieve(plain, [] { return 3; }), 3);
  EXPECT_EQ(retrieve(plain, [] { return 4; }), 3);
  AnyValueCache<int> any(plain);
  AnyValueCache<int> same = any;
  same.store(std::nullopt);
  EXPECT_EQ(any.retrieve(), std::nullopt);
  EXPECT_THROW(any.retrieve([]() -> int { throw 1; }), int);
  EXPECT_EQ(any.retrieve([] { return 5; }), 5);
  EXPECT_EQ(same.retrieve(), 5);
  EXPECT_EQ(plain.kept, 3) << "the box has a copy of its own";
}

TEST(ResettableLazy, LoadsAgainAfterReset) {
  int loads = 0;
  ResettableLazy<std::string> lazy([&] { return std::to_string(++loads); });
  EXPECT_FALSE(lazy.isLoaded());
  lazy.wrappedValue() += "!";
  EXPECT_EQ(lazy.wrappedValue(), "1!");
  lazy.reset();
  EXPECT_FALSE(lazy.isLoaded());
  EXPECT_EQ(lazy.wrappedValue(), "2");
}

struct Palette final : Subclass<Palette, TQSingleton> {
  static constexpr std::string_view className = "TestPalette";
};

TEST(TQSingleton, IsSharedUntilReplacedOrReset) {
  const auto first = TQSingleton::sharedInstance<Palette>();
  EXPECT_EQ(TQSingleton::sharedInstance<Palette>(), first);
  const auto second = TQSingleton::init<Palette>();
  EXPECT_EQ(TQSingleton::sharedInstance<Palette>(), second);
  first->awakeFromNib();
  EXPECT_EQ(TQSingleton::sharedInstance<Palette>(), first);
  TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Palette>();
  EXPECT_EQ(first->referenceCount(), 1u);
  EXPECT_NE(TQSingleton::sharedInstance<Palette>(), first);
  TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Palette>();
}

TEST(MapTable, FindsByEqualityAndForgetsDeadKeys) {
  for (const auto& table :
       {MapTable::weakToStrongObjectsMapTable(), MapTable::strongToStrongObjectsMapTable()}) {
    auto key = text("key");
    const auto other = text("other"), value = text("value");
    table->setObject(value, *key);
    table->setObjectForKeyedSubscript(other, *other);
    EXPECT_EQ(table->objectForKeyedSubscript(*text("key")), value.get());
    EXPECT_EQ(table->setObject(other, *text("key")).size(), 1u) << "the displaced value";
    EXPECT_EQ(table->count(), 2u);

    int calls = 0;
    table->enumerateKeysAndObjectsUsingBlock([&](Object&, Object&, bool& stop) {
      stop = true;
      ++calls;
      table->removeObjectForKey(*text("absent"));
    });
    table->enumerateKeysUsingBlock([&](Object&, bool&) { ++calls; });
    table->enumerateObjectsUsingBlock([&](Object& object, bool&) {
      EXPECT_EQ(&object, other.get());
      ++calls;
    });
    EXPECT_EQ(calls, 1 + 2 + 2);

    const auto kept = table->filter([&](Object& k, Object&) { return &k == key.get(); });
    EXPECT_EQ(kept->count(), 1u);
    EXPECT_EQ(table->count(), 2u);
    const bool isWeak = key->referenceCount() == 1;
    key = nullptr;
    EXPECT_EQ(kept->count(), isWeak ? 0u : 1u);
    EXPECT_EQ(kept->objectForKey(*text("key")), isWeak ? nullptr : other.get());
    EXPECT_EQ(kept->purge().size(), isWeak ? 1u : 0u);
    EXPECT_EQ(table->setObject(nullptr, *other).size(), isWeak ? 2u : 1u);
    EXPECT_EQ(table->removeAllObjects().size(), isWeak ? 0u : 1u);
  }
}

}  // namespace
}  // namespace tq
