#include <TQFoundation/objects/MapTable.h>

#include "support/Iterators.h"
#include "support/Objects.h"

namespace {

Ref<Object> number(NumberValue value) { return Number::numberWith(value); }

TEST(Dictionary, KeepsTheLastOfEqualKeysAndItsCopiesStayAsTheyAre) {
  const Ref<Dictionary> dictionary =
      Dictionary::dictionaryWithEntries({{"b", number(1)}, {"a", number(2)}, {"b", number(3)}});
  const Ref<MutableDictionary> growing = MutableDictionary::dictionaryWithDictionary(*dictionary);
  growing->setObject(number(4), "c");
  const Ref<Object> fixed = growing->copy();
  growing->removeAllObjects();
  EXPECT_EQ(dictionary->description(), "{b = 3; a = 2;}");
  EXPECT_EQ(fixed->description(), "{b = 3; a = 2; c = 4;}");
  EXPECT_EQ(growing->description(), "{}");
  EXPECT_TRUE(growing->isEqual(*Dictionary::dictionary()));
  test::expectIterators(*dictionary, 2, [](std::ptrdiff_t i, const Dictionary::Entry& entry) {
    return entry.value.isEqual(*number(3 - i));
  });
}

TEST(Dictionary, TreatsEqualNumbersAsOneKey) {
  const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  dictionary->setObject(String::of("true"), number(true));
  dictionary->setObject(String::of("1"), number(1));
  dictionary->setObject(String::of("1.0"), number(1.0));
  dictionary->setObject(String::of("text"), String::of("1"));
  EXPECT_EQ(dictionary->count(), 2u);
  EXPECT_EQ(dictionary->objectForKey(*number(1.0f))->description(), "1.0");
  EXPECT_EQ(dictionary->objectForKey("1")->description(), "text");
}

TEST(Dictionary, CopiesItsKeysAndRefusesNull) {
  const Ref<MutableData> key = MutableData::data();
  key->append("k");
  const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  dictionary->setObject(Null::null(), key);
  key->append("hanged");
  EXPECT_THROW(dictionary->setObject(nullptr, String::of("k")), Exception);
  EXPECT_THROW(dictionary->setObject(Null::null(), Ref<Object>()), Exception);
  EXPECT_EQ(dictionary->count(), 1u);
  EXPECT_TRUE(dictionary->objectForKey(*Data::dataWithBytes("k")));
}

struct Awkward final : Subclass<Awkward> {
  static constexpr std::string_view className = "Awkward";
  std::size_t hash() const override { return throws ? throw std::runtime_error("hash") : 7; }
  Ref<Object> copy() const override {
    if (const auto change = std::exchange(onCopy, nullptr)) change();
    return share(const_cast<Awkward&>(*this));
  }
  static inline bool throws = false;
  mutable std::function<void()> onCopy;
};

// The keys are searched, hashed from the next one on, or in an index that is full.
TEST(Dictionary, StaysCompleteWhenAKeyThrowsOrChangesIt) {
  for (const int count : {7, 8, 9, 32}) {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    const auto key = makeRef<Awkward>(), other = makeRef<Awkward>();
    dictionary->setObject(number(0), key);
    for (int i = 1; i < count; ++i) dictionary->setObject(number(i), std::to_string(i));
    Awkward::throws = true;
    int thrown = 0;
    for (const Ref<Object>& each : {Ref<Object>(String::of("new")), Ref<Object>(other)}) {
      try {
        dictionary->setObject(number(1), each);
      } catch (const std::runtime_error&) {
        ++thrown;
      }
    }
    EXPECT_EQ(thrown, count == 8 ? 2 : 1);
    EXPECT_EQ(dictionary->copy()->description(), dictionary->description());
    dictionary->removeObjectForKey(*String::of("1"));
    ASSERT_EQ(dictionary->count(), static_cast<std::size_t>(count == 8 ? 7 : count));
    for (int i = 2; i < count; ++i) EXPECT_TRUE(dictionary->objectForKey(std::to_string(i))) << i;
    Awkward::throws = false;
    EXPECT_TRUE(dictionary->objectForKey(*key));

    other->onCopy = [&] {
      dictionary->removeAllObjects();
      dictionary->setObject(number(1), other);
    };
    dictionary->setObject(number(2), other);
    EXPECT_EQ(dictionary->copy()->description(), "{" + other->description() + " = 2;}");
  }
}

TEST(Dictionary, RaisesWhenItChangesDuringIteration) {
  using Change = void (*)(MutableDictionary&);
  const std::pair<Change, bool> changes[] = {
      {[](MutableDictionary& d) { d.setObject(number(3), "c"); }, true},
      {[](MutableDictionary& d) { d.setObject(number(3), "b"); }, true},
      {[](MutableDictionary& d) { d.removeObjectForKey(*String::of("b")); }, true},
      {[](MutableDictionary& d) { d.removeAllObjects(); }, true},
      {[](MutableDictionary& d) { d.removeObjectForKey(*String::of("absent")); }, false},
  };
  for (const auto& [change, raises] : changes) {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    dictionary->setObject(number(1), "a");
    dictionary->setObject(number(2), "b");
    std::string raised;
    try {
      for (const auto entry : *dictionary) {
        if (entry.value.isEqual(*number(1))) change(*dictionary);
      }
    } catch (const Exception& exception) {
      raised = exception.name();
    }
    EXPECT_EQ(raised, raises ? "NSGenericException" : "");
  }
}

// 2^53 and 2^53 + 1 are different, but both equal 2^53 as a double.
TEST(Dictionary, IsEqualIfEachKeyHasOneOfItsOwn) {
  const std::int64_t exact = std::int64_t{1} << 53;
  const Ref<Object> a = number(exact), b = number(exact + 1), rounded = number(0x1p53);
  const auto compared = [](std::initializer_list<Ref<Object>> x,
                           std::initializer_list<Ref<Object>> y) {
    const auto keyed = [](std::initializer_list<Ref<Object>> keys) {
      std::vector<std::pair<Ref<Object>, Ref<Object>>> entries;
      for (const Ref<Object>& key : keys) entries.emplace_back(key, Null::null());
      return Dictionary::dictionaryWithEntries(entries);
    };
    const bool result = Set::setWithObjects(x)->isEqual(*Set::setWithObjects(y));
    EXPECT_EQ(Set::setWithObjects(y)->isEqual(*Set::setWithObjects(x)), result);
    EXPECT_EQ(keyed(x)->isEqual(*keyed(y)), result);
    EXPECT_EQ(keyed(y)->isEqual(*keyed(x)), result);
    return result;
  };
  EXPECT_FALSE(compared({a, b}, {rounded, number(5)}));
  EXPECT_TRUE(compared({number(5), b}, {rounded, number(5)}));
  EXPECT_TRUE(compared({a, b}, {b, a}));
  const Ref<Object> first = Array::arrayWithObjects({a, rounded});
  EXPECT_FALSE(compared({first, a}, {Array::arrayWithObjects({b, rounded}), a}));
  EXPECT_TRUE(compared({first, b}, {b, Array::arrayWithObjects({rounded, a})}));
}

/// Compares a dictionary with a plain list of entries while it grows beyond linear search and
/// shrinks again.
TEST(Dictionary, AgreesWithAListAfterRandomChanges) {
  std::mt19937 random(11);
  for (int round = 0; round < 30; ++round) {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    std::vector<std::pair<std::string, int>> list;
    for (int step = 0; step < 300; ++step) {
      const std::string key = std::to_string(random() % (round % 2 == 0 ? 14 : 40));
      const auto at = std::ranges::find(list, key, &std::pair<std::string, int>::first);
      if (random() % 5 < 2) {
        dictionary->removeObjectForKey(*String::of(key));
        if (at != list.end()) list.erase(at);
      } else {
        dictionary->setObject(number(step), key);
        if (at != list.end()) {
          at->second = step;
        } else {
          list.emplace_back(key, step);
        }
      }
    }
    ASSERT_EQ(dictionary->count(), list.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
      EXPECT_EQ(dictionary->keys()[i]->description(), list[i].first);
      EXPECT_EQ(dictionary->objectForKey(list[i].first)->description(),
                std::to_string(list[i].second));
      EXPECT_EQ(dictionary->objectForKey(*String::of(list[i].first)),
                dictionary->values()[i].get());
    }
    EXPECT_FALSE(dictionary->objectForKey("absent"));
    EXPECT_TRUE(dictionary->copy()->isEqual(*dictionary));
  }
}

TEST(Set, KeepsTheFirstOfEqualObjects) {
  const Ref<Set> set = Set::setWithObjects({number(2), number(1), number(true), String::of("1")});
  EXPECT_EQ(set->description(), "{(2, 1, 1)}");
  EXPECT_EQ(set->member(*number(1.0)), set->allObjects()[1].get());
  EXPECT_FALSE(set->containsObject(*Null::null()));
  EXPECT_TRUE(set->isEqual(*Set::setWithObjects({String::of("1"), number(1), number(2)})));
  EXPECT_FALSE(set->isEqual(*Set::setWithObjects({number(1), number(2), number(3)})));
  EXPECT_FALSE(set->isEqual(*Set::set()));
  EXPECT_THROW((void)Set::setWithObjects({nullptr}), Exception);
  std::vector<Ref<Object>> many;
  for (int i = 0; i < 100; ++i) many.push_back(number(i % 50));
  const Ref<Set> large = Set::setWithObjects(many);
  EXPECT_EQ(large->count(), 50u);
  EXPECT_TRUE(large->containsObject(*number(49)));
  EXPECT_FALSE(large->containsObject(*number(50)));
}

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
    table->enumerateKeysAndObjectsUsingBlock({});
    table->enumerateKeysUsingBlock({});
    table->enumerateObjectsUsingBlock({});
    EXPECT_EQ(calls, 1 + 2 + 2);
    EXPECT_TRUE(table->purge().empty());

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
