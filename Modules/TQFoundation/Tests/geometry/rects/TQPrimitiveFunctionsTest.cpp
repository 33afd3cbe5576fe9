#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(Angle, SnapsToStraightAnglesKeepingTheSignOfZero) {
  constexpr double kEighth = 0.39269908169872414;  // π/8, as in the function
  const Rows<const char*, double, double> cases{
      {"zero is negative", 0.0, -0.0},
      {"just above zero", 1e-300, 0.0},
      {"just below the first threshold", std::nextafter(kEighth, 0), 0.0},
      {"on it", kEighth, kPi / 4},
      {"on minus the first", -kEighth, -kPi / 4},
      {"second", 1.1780972450961724, kPi / 2},
      {"third", 1.9634954084936207, 3 * kPi / 4},
      {"fourth", 2.748893571891069, kPi},
      {"fifth stays", 3.5342917352885173, 3.5342917352885173},
      {"NaN", kNaN, kNaN},
  };
  for (const auto& [name, angle, expected] : cases) {
    EXPECT_PRED2(sameNumber, TQSlopeToStraightAngles(angle), expected) << name;
  }
}

TEST(Angle, NormalisesByRepeatedTurnsAndFarOutAtOnce) {
  EXPECT_EQ(TQNormalizeRadians(-kPi), -kPi);
  double stepped = 1000.25;  // many rounded steps differ from one remainder
  while (stepped > kPi) stepped -= 2 * kPi;
  EXPECT_EQ(TQNormalizeRadians(-1000.25), -stepped);
  EXPECT_EQ(TQNormalizeRadians(-1e16), std::remainder(-1e16, 2 * kPi));
  EXPECT_TRUE(std::isnan(TQNormalizeRadians(kNaN)));
  EXPECT_TRUE(std::isnan(TQNormalizeRadians(-kInf)));
}

TEST(Angle, SlopeAndDegrees) {
  EXPECT_EQ(TQSlopeBetweenPoints({5, 5}, {5, 5}), 0);
  EXPECT_EQ(TQSlopeBetweenPoints({0, 0.0}, {-1, -0.0}), -kPi);  // the sign of the zero decides
  EXPECT_EQ(TQRadiansToDegrees(kPi), 180);
  EXPECT_EQ(TQDegreesToRadians(90), kPi / 2);
}

TEST(FloatRange, UnitesAndIntersectsAsClosedIntervals) {
  const Rows<const char*, TQFloatRange, TQFloatRange, TQFloatRange, TQFloatRange> cases{
      {"overlapping", {0, 5}, {3, 5}, {0, 8}, {3, 2}},
      {"touching", {0, 5}, {5, 5}, {0, 10}, {5, 0}},
      {"disjoint", {0, 1}, {4, 1}, {0, 5}, {0, 0}},
      {"inside keeps its length", {-1e9, 2e9}, {0.3, 0.1}, {-1e9, 2e9}, {0.3, 0.1}},
      {"negative length", {5, -5}, {7, -4}, {0, 7}, {3, 2}},
  };
  for (const auto& [name, a, b, united, common] : cases) {
    SCOPED_TRACE(name);
    for (const auto& [x, y] : {std::pair(a, b), std::pair(b, a)}) {
      EXPECT_TRUE(TQFloatRangeEqualToRange(TQFloatRangeUnion(x, y), united));
      EXPECT_TRUE(TQFloatRangeEqualToRange(TQFloatRangeIntersection(x, y), common));
    }
  }
  EXPECT_TRUE(TQFloatRangeEqualToRange(TQFloatRangeIntersection({kNaN, 1}, {0, 1}), {0, 0}));
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

TEST(Size, MagnitudeNormalAndContainment) {
  EXPECT_EQ(TQSizeNormalise({-3, 4}), (Size{-3.0 / 5, 4.0 / 5}));
  EXPECT_EQ(TQSizeNormalise({0, 1e-10}), (Size{0, 1e-10}));
  EXPECT_EQ(TQSizeNormalise({0, 1e-09}), (Size{0, 1}));
  EXPECT_TRUE(TQSizeContainsSize({2, 3}, {2, 3}));
  EXPECT_FALSE(TQSizeContainsSize({2, 3}, {1, 4}));
  EXPECT_FALSE(TQSizeContainsSize({2, kNaN}, {1, 1}));
}

TEST(RectSafe, ReplacesBadNumbersAndKeepsExtentsFromVanishing) {
  expectFields(TQRectSafe({kNaN, kInf, 0, -0.05}), {0.1, 0.1, 0.1, -0.1});
  expectFields(TQRectSafe({-kInf, -0.0, kNaN, -7}), {0.1, -0.0, 0.1, -7});
  EXPECT_EQ(TQPointSafe({kInf, 4}), (Point{0.1, 4}));
}

TEST(RectSafe, PushesAwayFromZeroKeepingTheSign) {
  const Rows<double, double, double> cases{
      {0.0, 2, 2},   {-0.0, 2, 2},   {-1e-300, 2, -2}, {-3, 2, -3},    {3, 2, 3},
      {-kInf, 2, 2}, {kNaN, 0, 0.1}, {5, kNaN, 5},     {-5, kNaN, -5}, {1, kInf, kInf}};
  for (const auto& [value, minimum, expected] : cases) {
    EXPECT_EQ(TQFloatMakeAbsGreaterThanOrEqual(value, minimum), expected)
        << value << ", " << minimum;
  }
}

TEST(RectSafe, UnionMakesNoExceptionForNullRects) {
  expectFields(TQUnionRectSafe({10, 10, -5, -5}, {7, 0, 1, 20}), {5, 0, 5, 20});
  expectFields(TQUnionRectSafe(RectNull, {1, 2, 3, 4}), {1, 2, kInf, kInf});
  expectFields(TQUnionRectSafe({kNaN, 0, 1, 1}, {3, 0, 1, 1}), {3, 0, 1, 1});
}

TEST(RectRounding, RoundsEachFieldAndMultipliesByTheInverseStep) {
  expectFields(TQRectByRoundingRect({0.5, -0.5, 2.4999, -0.2}), {1, -1, 2, -0.0});
  expectFields(TQRectByRoundingRectToStep({7, -7, 1, 0.9}, 2), {8, -8, 2, 0});
  // Near a tie they differ: 0.35 / 0.1 is just below 3.5, 0.35 × (1 / 0.1) is 3.5.
  EXPECT_EQ(TQFloatRoundToStep(0.35, 0.1), 3 * 0.1);
  EXPECT_EQ(TQRectByRoundingRectToStep({0.35, 0, 0, 0}, 0.1).origin.x, 4 * 0.1);
  EXPECT_TRUE(std::isnan(TQFloatRoundToStep(1, 0)));
  EXPECT_TRUE(std::isnan(TQFloatRoundToStep(1, kInf)));
}

}  // namespace
}  // namespace tq
