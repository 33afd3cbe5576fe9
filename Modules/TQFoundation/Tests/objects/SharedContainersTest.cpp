#include "support/Objects.h"

namespace {

Ref<Object> arrayOf(Ref<Object> a, Ref<Object> b) {
  return Array::arrayWithObjects({std::move(a), std::move(b)});
}

Ref<Object> growingOf(Ref<Object> a, Ref<Object> b) {
  Ref<MutableArray> array = MutableArray::array();
  array->addObject(std::move(a));
  array->addObject(std::move(b));
  return array;
}

Ref<Object> dictionaryOf(Ref<Object> a, Ref<Object> b) {
  return Dictionary::dictionaryWithEntries({{"a", std::move(a)}, {"b", std::move(b)}});
}

Ref<Object> setOf(Ref<Object> a, Ref<Object> b) {
  return Set::setWithObjects({std::move(a), Array::arrayWithObjects({std::move(b)})});
}

Ref<Object> keyedBy(Ref<Object> a, Ref<Object> b) {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {{setOf(b, a), Null::null()},
                                                         {Array::arrayWithObjects({b}), b}};
  return Dictionary::dictionaryWithEntries(entries);
}

Ref<Object> errorOf(Ref<Object> a, Ref<Object> b) {
  return Error::errorWithDomain("domain", 7, refCast<Dictionary>(dictionaryOf(a, b)));
}

constexpr Ref<Object> (*kPairs[])(Ref<Object>, Ref<Object>) = {arrayOf, growingOf, dictionaryOf,
                                                               setOf,   keyedBy,   errorOf};

/// A container of 2^60 paths to one leaf.
Ref<Object> doubled(Ref<Object> (*pair)(Ref<Object>, Ref<Object>), std::string_view leaf) {
  Ref<Object> object = String::of(leaf);
  for (int i = 0; i < 60; ++i) object = pair(object, object);
  return object;
}

/// Containers inside of each other: a million of those that documents have, fewer of the others.
Ref<Object> deep(std::size_t form) {
  Ref<Object> object = String::of("leaf");
  const double levels = (form < 3 ? 1'000'000 : 100'000) * test::kShare;
  for (int i = 0; i < levels; ++i) object = kPairs[form](std::move(object), Null::null());
  return object;
}

void expectUsable(const Ref<Object>& a, const Ref<Object>& same, const Ref<Object>& other) {
  EXPECT_TRUE(a->isEqual(*same));
  EXPECT_FALSE(a->isEqual(*other));
  EXPECT_EQ(a->hash(), same->hash());
  EXPECT_TRUE(a->copy()->isEqual(*a));
  EXPECT_LT(a->description().size(), std::size_t{2} << 20);
}

// Each path by itself would take years.
TEST(SharedContainers, AreComparedOnce) {
  for (const auto pair : kPairs) {
    expectUsable(doubled(pair, "a"), doubled(pair, "a"), doubled(pair, "b"));
  }
  // Each part of one graph corresponds to several parts of the other one.
  Ref<Object> a = String::of("leaf");
  Ref<Object> b = String::of("leaf");
  for (int i = 0; i < 60; ++i) {
    const Ref<Object> next = arrayOf(b, a);
    b = arrayOf(a, b);
    a = next;
  }
  EXPECT_TRUE(a->isEqual(*b));
  // A wide container that is shared often.
  const auto wide = [](std::string_view last) {
    std::vector<Ref<Object>> leaves(30'000, String::of("leaf"));
    leaves.back() = String::of(last);
    std::vector<Ref<Object>> uses(30'000, Array::arrayWithObjects(leaves));
    return Array::arrayWithObjects(uses);
  };
  EXPECT_TRUE(wide("a")->isEqual(*wide("a")));
  EXPECT_FALSE(wide("a")->isEqual(*wide("b")));
}

// Each of the pairs (a, rounded), (b, rounded) and (b, b) is equal, but (a, b) is not. They come
// when so much was compared that pairs are remembered.
TEST(SharedContainers, ThatAreEqualByRoundingAreComparedOnceForEachPair) {
  const std::int64_t exact = std::int64_t{1} << 53;
  const auto numbers = [](NumberValue value) -> Ref<Object> {
    return Array::arrayWithNumbers(std::vector{value});
  };
  const Ref<Object> a = numbers(exact), b = numbers(exact + 1), rounded = numbers(0x1p53);
  const auto after = [](std::initializer_list<Ref<Object>> last) {
    std::vector<Ref<Object>> objects(300'000, String::of("leaf"));
    objects.insert(objects.end(), last);
    return Array::arrayWithObjects(objects);
  };
  EXPECT_FALSE(after({a, b, a})->isEqual(*after({rounded, rounded, b})));
  EXPECT_TRUE(after({a, b, b})->isEqual(*after({rounded, rounded, b})));
  Ref<Object> x = a, y = rounded;
  for (int i = 0; i < 60; ++i) x = arrayOf(x, x), y = arrayOf(y, y);
  EXPECT_TRUE(x->isEqual(*y));
}

TEST(SharedContainersStress, MayBeAMillionDeep) {
  for (std::size_t form = 0; form < std::size(kPairs); ++form) {
    SCOPED_TRACE(form);
    const Ref<Object> same = deep(form);
    expectUsable(deep(form), same, kPairs[form](same, Null::null()));
  }
}

// Members and keys that are containers are found by value, in any order and among unequal ones with
// the same hash.
TEST(SharedContainers, AreFoundByValue) {
  const auto nestedSet = [](std::initializer_list<double> order) {
    std::vector<Ref<Object>> members;
    for (const double number : order) {
      const Ref<Object> inner = Array::arrayWithObjects(
          {String::of("x"), Number::numberWith(number), Array::arrayWithNumbers(std::vector{1.0})});
      members.push_back(Array::arrayWithObjects({inner}));
    }
    members.push_back(String::of("leaf"));
    return Set::setWithObjects(members);
  };
  EXPECT_TRUE(nestedSet({1, 2, 3})->isEqual(*nestedSet({3, 1, 2})));
  EXPECT_FALSE(nestedSet({1, 2, 3})->isEqual(*nestedSet({3, 1, 4})));
  const auto keyed = [&](double a, double b, std::int64_t code) {
    const std::pair<Ref<Object>, Ref<Object>> entries[] = {
        {nestedSet({a}), String::of("a")}, {nestedSet({b}), Error::errorWithDomain("d", code)}};
    return Dictionary::dictionaryWithEntries(entries);
  };
  EXPECT_TRUE(keyed(1, 2, 5)->isEqual(*keyed(1, 2, 5)));
  EXPECT_FALSE(keyed(1, 2, 5)->isEqual(*keyed(2, 1, 5)));
  EXPECT_FALSE(keyed(1, 2, 5)->isEqual(*keyed(1, 2, 6)));
  EXPECT_FALSE(Error::errorWithDomain("d", 1)->isEqual(*Error::errorWithDomain("e", 1)));
  const Ref<MutableArray> cycles[] = {MutableArray::array(), MutableArray::array()};
  for (const Ref<MutableArray>& cycle : cycles) {
    cycle->addObject(Set::setWithObjects({cycle, Null::null()}));
  }
  EXPECT_TRUE(cycles[0]->isEqual(*cycles[0]));
  EXPECT_FALSE(cycles[0]->isEqual(*cycles[1]));
  for (const Ref<MutableArray>& cycle : cycles) cycle->removeAllObjects();
}

TEST(SharedContainers, HaveDescriptionsOfLimitedLength) {
  constexpr std::size_t kMiB = std::size_t{1} << 20;
  const Ref<Object> longText = String::of(std::string(700'000, 'x') + "é");
  const std::string text = arrayOf(longText, longText)->description();
  EXPECT_EQ(text.substr(0, 3), "(xx");
  EXPECT_TRUE(text.ends_with("x…)")) << text.substr(text.size() - 20);
  EXPECT_LT(text.size(), kMiB + 10);
  std::string characters;
  for (int i = 0; i < 600'000; ++i) characters += "é";
  const std::string cut = arrayOf(String::of(characters), longText)->description();
  EXPECT_TRUE(String::stringWithUTF8(cut)) << "cut inside of a character";
  EXPECT_TRUE(cut.ends_with("é…)"));
  EXPECT_EQ(arrayOf(String::of("a"), dictionaryOf(String::of("b"), longText->copy()))
                ->description()
                .substr(0, 14),
            "(a, {a = b; b ");
}

}  // namespace
