#include <TQFoundation/geometry/rects/TQFloatRange.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(FloatRange, UnitesAndIntersectsAsClosedIntervals) {
  const struct {
    const char* name;
    TQFloatRange a, b, united, common;
  } cases[] = {
      {"overlapping", {0, 5}, {3, 5}, {0, 8}, {3, 2}},
      {"touching", {0, 5}, {5, 5}, {0, 10}, {5, 0}},
      {"disjoint", {0, 1}, {4, 1}, {0, 5}, {0, 0}},
      {"inside keeps its length", {-1e9, 2e9}, {0.3, 0.1}, {-1e9, 2e9}, {0.3, 0.1}},
      {"negative length", {5, -5}, {7, -4}, {0, 7}, {3, 2}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    for (const bool swapped : {false, true}) {
      const TQFloatRange a = swapped ? c.b : c.a;
      const TQFloatRange b = swapped ? c.a : c.b;
      EXPECT_TRUE(TQFloatRangeEqualToRange(TQFloatRangeUnion(a, b), c.united));
      EXPECT_TRUE(TQFloatRangeEqualToRange(TQFloatRangeIntersection(a, b), c.common));
    }
  }
  const TQFloatRange nothing = TQFloatRangeIntersection({kNaN, 1}, {0, 1});
  EXPECT_TRUE(TQFloatRangeEqualToRange(nothing, {0, 0}));
  EXPECT_TRUE(TQFloatRangeEqualToRange(TQFloatRangeUnion({kNaN, 1}, {2, 1}), {2, 1}));
}

TEST(FloatRange, HoldsIndexRangesUpToTheLastIndex) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  EXPECT_TRUE(TQRangeContainsRange({2, 3}, {5, 0}));
  EXPECT_FALSE(TQRangeContainsRange({2, 3}, {6, 0}));
  EXPECT_FALSE(TQRangeContainsRange({2, 3}, {1, 2}));
  EXPECT_FALSE(TQRangeContainsRange({2, 3}, {4, kMax}));
  EXPECT_TRUE(TQRangeContainsRange({0, kMax}, {kMax, 0}));
}

TEST(FloatRange, IsBoxedUnderItsSignature) {
  const Ref<Value> boxed = valueWithTQFloatRange({1.5, -2});
  EXPECT_EQ(boxed->typeSignature(), "{?=dd}");
  const auto range = TQFloatRangeValue(*boxed);
  ASSERT_TRUE(range.has_value());
  EXPECT_TRUE(TQFloatRangeEqualToRange(*range, {1.5, -2}));
  EXPECT_FALSE(TQFloatRangeValue(*Value::valueWithPoint({1, 2})).has_value());
}

}  // namespace
}  // namespace tq
