#include <TQFoundation/objects/ArrayConveniences.h>

#include "support/Iterators.h"
#include "support/Objects.h"
#include "support/OnDestruction.h"

namespace {

TEST(Array, PackedBoxedAndMutableAreEqual) {
  const std::vector<NumberValue> sets[] = {
      {1L, 2L, 3L}, {1.0, 2.0, 3.0}, {1, 2.0f, std::uint64_t{3}}, {std::int8_t{1}, 2, 3}};
  for (const auto& numbers : sets) {
    const Ref<Array> packed = Array::arrayWithNumbers(numbers);
    EXPECT_TRUE(packed->isPacked());
    std::vector<Ref<Object>> boxes;
    for (const NumberValue number : numbers) boxes.push_back(Number::numberWith(number));
    const Ref<Array> boxed = Array::arrayWithObjects(boxes);
    const Ref<Array> growing = MutableArray::arrayWithArray(*boxed);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      EXPECT_EQ(packed->numberAtIndex(i).kind(), numbers[i].kind());
      EXPECT_EQ(packed->numberAtIndex(i).bits(), numbers[i].bits());
    }
    EXPECT_EQ(packed->description(), "(1, 2, 3)");
    for (const Ref<Array>& a : {packed, boxed, growing}) {
      EXPECT_EQ(a->hash(), packed->hash());
      EXPECT_EQ(a->description(), packed->description());
      for (const Ref<Array>& b : {packed, boxed, growing}) EXPECT_TRUE(a->isEqual(*b));
      EXPECT_TRUE(a->isEqual(*Array::arrayWithNumbers(std::vector<double>{1, 2, 3})));
      EXPECT_FALSE(a->isEqual(*Array::arrayWithNumbers(std::vector<double>{1, 2})));
      EXPECT_FALSE(a->isEqual(*Array::arrayWithNumbers(std::vector<double>{1, 2, 4})));
    }
  }
  const Ref<Array> numbers = Array::arrayWithNumbers(std::vector{0.0, 1.0, 2.0});
  test::expectIterators(*numbers, 3, [](std::ptrdiff_t i, const Object& object) {
    return object.isEqual(*Number::numberWith(i));
  });
  EXPECT_TRUE(Array::array()->isEqual(*MutableArray::array()));
  EXPECT_FALSE(Array::array()->isEqual(*Null::null()));
}

TEST(Array, BoxesOnceAndForAllThreads) {
  for (int round = 0; round < 50; ++round) {
    const Ref<Array> packed = Array::arrayWithNumbers(std::vector<double>(100, 0.5));
    const Object* seen[2] = {};
    {
      std::jthread other([&] { seen[0] = &packed->objectAtIndex(7); });
      seen[1] = &packed->objectAtIndex(7);
    }
    EXPECT_EQ(seen[0], seen[1]);
    EXPECT_EQ(packed->lastObject()->description(), "0.5");
  }
}

TEST(MutableArray, ChangesInPlaceAndRefusesInvalidArguments) {
  const Ref<MutableArray> array = MutableArray::array();
  EXPECT_EQ(array->firstObject(), nullptr);
  array->addObject(String::of("b"));
  array->insertObject(String::of("a"), 0);
  array->insertObject(String::of("d"), 2);
  array->replaceObjectAtIndex(2, String::of("c"));
  EXPECT_EQ(array->description(), "(a, b, c)");
  const Ref<Object> fixed = array->copy();
  array->removeObjectAtIndex(1);
  EXPECT_EQ(array->description(), "(a, c)");
  EXPECT_EQ(fixed->description(), "(a, b, c)");
  EXPECT_EQ(fixed->copy(), fixed);

  const std::vector<Ref<Object>> withNull{Null::null(), nullptr};
  std::vector<Ref<Object>> offered = withNull;
  const std::pair<std::function<void()>, const char*> faults[] = {
      {[&] { array->addObject(nullptr); }, InvalidArgumentException},
      {[&] { array->insertObject(nullptr, 0); }, InvalidArgumentException},
      {[&] { array->replaceObjectAtIndex(0, nullptr); }, InvalidArgumentException},
      {[&] { array->insertObject(Null::null(), 3); }, RangeException},
      {[&] { array->replaceObjectAtIndex(2, Null::null()); }, RangeException},
      {[&] { array->removeObjectAtIndex(2); }, RangeException},
      {[&] { (void)array->objectAtIndex(2); }, RangeException},
      {[&] { (void)Array::array()->objectAtIndex(0); }, RangeException},
      {[&] { (void)Array::arrayWithObjects(withNull); }, InvalidArgumentException},
      {[&] { (void)Array::arrayWithObjects(std::move(offered)); }, InvalidArgumentException},
  };
  for (const auto& [act, name] : faults) {
    EXPECT_THAT(act, testing::Throws<Exception>(testing::Property(&Exception::name, name)));
  }
  EXPECT_EQ(array->description(), "(a, c)");
  EXPECT_EQ(offered, withNull);
  array->removeAllObjects();
  EXPECT_EQ(array->count(), 0u);
}

TEST(MutableArray, IsConsistentWhenARemovedElementReadsIt) {
  const Ref<MutableArray> array = MutableArray::array();
  std::size_t seen = 99;
  const auto fill = [&] {
    array->addObject(makeRef<test::OnDestruction>([&] { seen = array->count(); }));
    array->addObject(Null::null());
  };
  fill();
  array->removeObjectAtIndex(0);
  EXPECT_EQ(seen, 1u);
  fill();
  array->removeAllObjects();
  EXPECT_EQ(seen, 0u);
}

Ref<Array> numbers(const std::vector<double>& values) { return Array::arrayWithNumbers(values); }
double valueOf(const Object& object) { return objectCast<Number>(&object)->doubleValue(); }
bool isOdd(Object& object) { return static_cast<int>(valueOf(object)) % 2 != 0; }
std::string textOf(const Ref<Array>& array) { return array->description(); }

TEST(ArrayConveniences, MapReturnsOneObjectForEachElementAndCompactMapDropsNulls) {
  const auto doubled = [](Object& object) -> Ref<Object> {
    return Number::numberWith(NumberValue(valueOf(object) * 2));
  };
  EXPECT_EQ(textOf(numbers({1, 2, 3})->map(doubled)), "(2, 4, 6)");
  EXPECT_EQ(Array::array()->map(doubled)->count(), 0U);
  const auto none = [](Object&) { return Ref<Object>(); };
  EXPECT_THROW(static_cast<void>(numbers({1})->map(none)), Exception);
  const auto oddOnly = [](Object& object) -> Ref<Object> {
    if (isOdd(object)) return share(object);
    return valueOf(object) > 3 ? Ref<Object>(Null::null()) : nullptr;
  };
  EXPECT_EQ(textOf(numbers({1, 2, 3, 4, 5})->compactMap(oddOnly)), "(1, 3, 5)");
}

TEST(ArrayConveniences, FunctionsKeepTheOrderOfElements) {
  const Ref<Array> some = numbers({3, 1, 3, 2, 1});
  EXPECT_EQ(textOf(some->filter(isOdd)), "(3, 1, 3, 1)");
  EXPECT_EQ(numbers({})->lastObject(), nullptr);
  EXPECT_EQ(Array::arrayWithNumbers(std::span<const NumberValue>())->hash(), numbers({})->hash());
  EXPECT_EQ(textOf(arrayByRemovingDuplicates(*some)), "(3, 1, 2)");
  EXPECT_EQ(textOf(reversedArray(*some)), "(1, 2, 3, 1, 3)");
  const Ref<Number> three = Number::numberWith(NumberValue(3.0));
  EXPECT_EQ(textOf(arrayByRemovingObject(*some, *three)), "(1, 2, 1)");
  EXPECT_TRUE(containsObject(*some, *three));
  EXPECT_FALSE(containsObject(*arrayByRemovingObject(*some, *three), *three));
  const auto isTwo = [](Object& object) { return valueOf(object) == 2; };
  EXPECT_EQ(firstObjectPassing(*some, isTwo), &some->objectAtIndex(3));
  EXPECT_EQ(firstObjectPassing(*Array::array(), isTwo), nullptr);
}

TEST(ArrayConveniences, BlocksMayChangeAndReleaseTheArray) {
  Ref<MutableArray> array;
  const auto same = [&](Object& object) {  // changes and releases the array
    if (array) {
      array->removeAllObjects();
      for (int i = 0; i < 1000; ++i) array->addObject(Null::null());
      array = nullptr;
    }
    return share(object);
  };
  const auto alone = [&](Object& object) { return Array::arrayWithObjects({same(object)}); };
  const auto isLast = [&](Object& object) { return valueOf(*same(object)) == 99; };
  const std::function<Ref<Object>(const Array&)> calls[] = {
      [&](const Array& all) { return share(*all.map(same)->lastObject()); },
      [&](const Array& all) { return share(*all.compactMap(same)->lastObject()); },
      [&](const Array& all) { return share(*all.flatMap(alone)->lastObject()); },
      [&](const Array& all) { return share(*all.filter(isLast)->firstObject()); },
      [&](const Array& all) { return firstObjectPassing(all, isLast); },
  };
  for (const auto& call : calls) {
    array = MutableArray::array();
    for (int i = 0; i < 100; ++i) array->addObject(Number::numberWith(i));
    const Ref<Object> last(array->lastObject());
    EXPECT_EQ(call(*array), last);
  }
}

TEST(ArrayConveniences, RemoveNullAndJoinArrays) {
  const Ref<Object> null = Null::null();
  const Ref<Array> mixed = Array::arrayWithObjects({null, numbers({1, 2}), null});
  const Ref<Array> rest = arrayByRemovingNull(*mixed);
  EXPECT_EQ(textOf(rest), "((1, 2))");
  const auto itselfTwice = [](Object& object) {
    return object.kind() == ObjectKind::null
               ? Ref<Array>()
               : Array::arrayWithObjects({share(object), share(object)});
  };
  EXPECT_EQ(textOf(mixed->flatMap(itselfTwice)), "((1, 2), (1, 2))");
}

}  // namespace
