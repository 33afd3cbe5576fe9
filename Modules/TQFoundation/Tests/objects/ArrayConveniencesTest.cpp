#include <TQFoundation/objects/ArrayConveniences.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>

namespace tq {
namespace {

Ref<Array> numbers(const std::vector<double>& values) { return Array::arrayWithNumbers(values); }
double valueOf(const Object& object) { return objectCast<Number>(&object)->doubleValue(); }
bool isOdd(Object& object) { return static_cast<int>(valueOf(object)) % 2 != 0; }
std::string textOf(const Ref<Array>& array) { return array->description(); }

TEST(ArrayConveniences, MapReturnsOneObjectForEachElement) {
  const auto doubled = [](Object& object) -> Ref<Object> {
    return Number::numberWith(NumberValue(valueOf(object) * 2));
  };
  EXPECT_EQ(textOf(map(*numbers({1, 2, 3}), doubled)), "(2, 4, 6)");
  EXPECT_EQ(map(*Array::array(), doubled)->count(), 0U);
  const auto none = [](Object&) { return Ref<Object>(); };
  EXPECT_THROW(static_cast<void>(map(*numbers({1}), none)), Exception);
}

TEST(ArrayConveniences, CompactMapDropsNullAndTheNullObject) {
  const auto oddOnly = [](Object& object) -> Ref<Object> {
    if (isOdd(object)) return share(object);
    return valueOf(object) > 3 ? Ref<Object>(Null::null()) : nullptr;
  };
  EXPECT_EQ(textOf(compactMap(*numbers({1, 2, 3, 4, 5}), oddOnly)), "(1, 3, 5)");
}

TEST(ArrayConveniences, FunctionsKeepTheOrderOfElements) {
  const Ref<Array> some = numbers({3, 1, 3, 2, 1});
  EXPECT_EQ(textOf(filter(*some, isOdd)), "(3, 1, 3, 1)");
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
  EXPECT_EQ(textOf(flatMap(*mixed, itselfTwice)), "((1, 2), (1, 2))");
}

}  // namespace
}  // namespace tq
