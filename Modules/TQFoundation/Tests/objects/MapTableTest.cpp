#include <TQFoundation/objects/MapTable.h>

#include <gtest/gtest.h>

#include <TQFoundation/objects/String.h>

namespace tq {
namespace {

TEST(MapTable, FindsByEqualityAndDropsDestroyedKeys) {
  for (const auto& table :
       {MapTable::weakToStrongObjectsMapTable(), MapTable::strongToStrongObjectsMapTable()}) {
    auto key = String::of("key");
    const auto other = String::of("other"), value = String::of("value");
    table->setObject(value, *key);
    table->setObjectForKeyedSubscript(other, *other);
    EXPECT_EQ(table->objectForKeyedSubscript(*String::of("key")), value.get());
    EXPECT_EQ(table->setObject(other, *String::of("key")).size(), 1u) << "the replaced value";
    EXPECT_EQ(table->count(), 2u);

    int calls = 0;
    table->enumerateKeysAndObjectsUsingBlock([&](Object&, Object&, bool& stop) {
      stop = true;
      ++calls;
      table->removeObjectForKey(*String::of("absent"));
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
    EXPECT_EQ(kept->objectForKey(*String::of("key")), isWeak ? nullptr : other.get());
    EXPECT_EQ(kept->purge().size(), isWeak ? 1u : 0u);
    EXPECT_EQ(table->setObject(nullptr, *other).size(), isWeak ? 2u : 1u);
    EXPECT_EQ(table->removeAllObjects().size(), isWeak ? 0u : 1u);
  }
}

}  // namespace
}  // namespace tq
