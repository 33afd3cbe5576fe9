#include <climits>

#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>

#include "support/Test.h"

namespace {

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

TEST(Angle, IsNormalisedByRepeatedTurnsAndFarOutAtOnce) {
  EXPECT_EQ(TQNormalizeRadians(-kPi), -kPi);
  double stepped = 1000.25;  // many rounded steps differ from one remainder
  while (stepped > kPi) stepped -= 2 * kPi;
  EXPECT_EQ(TQNormalizeRadians(-1000.25), -stepped);
  EXPECT_EQ(TQNormalizeRadians(-1e16), std::remainder(-1e16, 2 * kPi));
  EXPECT_TRUE(std::isnan(TQNormalizeRadians(kNaN)));
  EXPECT_TRUE(std::isnan(TQNormalizeRadians(-kInf)));
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
  EXPECT_TRUE(range && TQFloatRangeEqualToRange(*range, {1.5, -2}));
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
  // A union makes no exception for null rects.
  expectFields(TQUnionRectSafe({10, 10, -5, -5}, {7, 0, 1, 20}), {5, 0, 5, 20});
  expectFields(TQUnionRectSafe(RectNull, {1, 2, 3, 4}), {1, 2, kInf, kInf});
  expectFields(TQUnionRectSafe({kNaN, 0, 1, 1}, {3, 0, 1, 1}), {3, 0, 1, 1});
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

TEST(RectRounding, RoundsEachFieldAndMultipliesByTheInverseStep) {
  expectFields(TQRectByRoundingRect({0.5, -0.5, 2.4999, -0.2}), {1, -1, 2, -0.0});
  expectFields(TQRectByRoundingRectToStep({7, -7, 1, 0.9}, 2), {8, -8, 2, 0});
  // Near a tie they differ: 0.35 / 0.1 is just below 3.5, 0.35 × (1 / 0.1) is 3.5.
  EXPECT_EQ(TQFloatRoundToStep(0.35, 0.1), 3 * 0.1);
  EXPECT_EQ(TQRectByRoundingRectToStep({0.35, 0, 0, 0}, 0.1).origin.x, 4 * 0.1);
  EXPECT_TRUE(std::isnan(TQFloatRoundToStep(1, 0)));
  EXPECT_TRUE(std::isnan(TQFloatRoundToStep(1, kInf)));
}

constexpr auto kX = Axis::horizontal;
constexpr auto kY = Axis::vertical;
constexpr auto kOther = static_cast<Axis>(9);

TEST(Axis, MasksAndFlipsTakeAnyValue) {
  EXPECT_EQ(TQAxisMaskMake(false, true), AxisMask::vertical);
  EXPECT_EQ(TQAxisMaskFromAxis(kY), AxisMask::vertical);
  EXPECT_EQ(TQAxisMaskFromAxis(static_cast<Axis>(-1)), AxisMask::none);
  EXPECT_EQ(TQAxisMaskFromAxis(static_cast<Axis>(32)), AxisMask::none);
  EXPECT_EQ(TQAxisFlip(kX), kY);
  EXPECT_EQ(TQAxisFlip(TQAxisFlip(static_cast<Axis>(INT_MIN))), static_cast<Axis>(INT_MIN));
  EXPECT_EQ(TQAxisMaskFlip(AxisMask::horizontal), AxisMask::vertical);
}

TEST(Corner, EnumerationLeavesOutTheCentreAndStopsAtTheAnswer) {
  std::string seen;
  TQCornerEnumerate([&](TQCorner corner) { seen += std::to_string(static_cast<int>(corner)); });
  EXPECT_EQ(seen, "01234567");
  int asked = 0;
  const auto fifth = [&](TQCorner corner) { return ++asked, corner >= TQCorner::minXMidY; };
  EXPECT_EQ(TQCornerFirstCornerSatisfyingPredicate(fifth), TQCorner::minXMidY);
  EXPECT_EQ(asked, 6);
  const auto centre = [](TQCorner corner) { return corner == TQCorner::center; };
  EXPECT_EQ(static_cast<int>(TQCornerFirstCornerSatisfyingPredicate(centre)), -1);
  EXPECT_EQ(TQCornerMaskFromCorner(TQCorner::center), 256U);
  EXPECT_EQ(TQCornerMaskFromCorner(static_cast<TQCorner>(40)), 0U);
}

TEST(RectAxis, ReadsAndMovesEitherSignOfExtent) {
  for (const Rect& rect : {Rect{10, 200, 30, 60}, Rect{40, 260, -30, -60}}) {
    SCOPED_TRACE(rect.size.width);
    const Rows<Axis, double, double, double, double> cases{
        {kX, 10, 25, 40, 30}, {kY, 200, 230, 260, 60}, {kOther, 200, 230, 260, 60}};
    for (const auto& [axis, min, mid, max, size] : cases) {
      SCOPED_TRACE(static_cast<int>(axis));
      EXPECT_EQ(TQRectSizeForAxis(axis, rect), size);
      EXPECT_EQ(TQRectRangeForAxis(axis, rect).length, size);
      const Rows<decltype(&TQRectMinForAxis), decltype(&TQRectWithMinForAxis), double> places{
          {TQRectMinForAxis, TQRectWithMinForAxis, min},
          {TQRectMidForAxis, TQRectWithMidForAxis, mid},
          {TQRectMaxForAxis, TQRectWithMaxForAxis, max}};
      for (const auto& [get, set, place] : places) {
        EXPECT_EQ(get(axis, rect), place);
        const Rect moved = set(axis, -7, rect);
        EXPECT_EQ(get(axis, moved), -7);
        EXPECT_EQ(moved.size, rect.size);
        const Axis across = axis == kX ? kY : kX;
        EXPECT_EQ(get(across, moved), get(across, rect));
      }
    }
  }
  EXPECT_EQ(TQRectWithSizeForAxis(kY, -3, {1, 2, 3, 4}).size, (Size{3, -3}));
}

TEST(RectAxis, ValuesInOrderReadTheRawOriginAndTheMaximumAndKeysAreSixNames) {
  const Rect rect{40, 260, -30, -60};
  EXPECT_EQ(TQRectValueForAxisInOrder(kX, 0, rect), 40);
  EXPECT_EQ(TQRectValueForAxisInOrder(kY, -5, Rect(1, 2, 3, 4)), 6);
  EXPECT_EQ(TQRectAddValueForAxisInOrder(kX, 0, 5, {10, 0, 30, 1}), Rect(15, 0, 25, 1));
  EXPECT_EQ(TQRectAddValueForAxisInOrder(kY, 1, 5, {10, 0, 30, 1}), Rect(10, 0, 30, 6));
  const Rows<const char*, double> cases{{"minX", 10},  {"midX", 25},  {"maxX", 40}, {"minY", 200},
                                        {"midY", 230}, {"maxY", 260}, {"MinX", 0},  {"", 0}};
  for (const auto& [key, value] : cases) EXPECT_EQ(TQRectValueForKey(rect, key), value) << key;
}

TEST(RectAxis, OverlapAbuttingAndContainmentOnOneAxis) {
  const Rows<const char*, double, double, double, double, bool, bool, bool> cases{
      {"inside", 0, 10, 2, 3, true, true, true},
      {"around", 2, 3, 0, 10, true, true, false},
      {"touching", 0, 10, 10, 5, false, true, false},
      {"in common less than one", 0, 10, 9.5, 5, true, true, false},
      {"apart", 0, 10, 11, 5, false, false, false},
      {"no length inside", 0, 10, 4, 0, false, false, true},
      {"both without length at one place", 4, 0, 4, 0, false, true, true},
      {"negative length counts as written", 10, -10, 2, 3, false, false, true},
      {"NaN origin leaves the second length", 0, 10, kNaN, 3, true, true, false},
  };
  for (const auto& [name, aOrigin, aLength, bOrigin, bLength, intersects, abutsOrIntersects,
                    contains] : cases) {
    SCOPED_TRACE(name);
    const Rect xa{aOrigin, 100, aLength, 1}, xb{bOrigin, -100, bLength, 1};
    const Rect ya{100, aOrigin, 1, aLength}, yb{-100, bOrigin, 1, bLength};
    EXPECT_EQ(TQRectIntersectsRectOnAxis(kX, xa, xb), intersects);
    EXPECT_EQ(TQRectIntersectsRectOnAxis(kOther, ya, yb), intersects);
    EXPECT_EQ(TQRectIntersectsOrAbutsRectOnAxis(kX, xa, xb), abutsOrIntersects);
    EXPECT_EQ(TQRectContainsRectOnAxis(kX, xa, xb), contains);
    EXPECT_FALSE(TQRectContainsRectOnAxis(kOther, ya, yb));
  }
}

TEST(RectCorners, PointsEdgesAndResizing) {
  const Rect rect{10, 20, 30, 40};
  const Rows<int, Point, Rect> cases{
      {0, {10, 20}, {15, 50, 25, 10}}, {1, {40, 20}, {10, 50, 5, 10}},
      {2, {10, 60}, {15, 20, 25, 30}}, {3, {40, 60}, {10, 20, 5, 30}},
      {4, {25, 20}, {10, 50, 30, 10}}, {5, {10, 40}, {15, 20, 25, 40}},
      {6, {40, 40}, {10, 20, 5, 40}},  {7, {25, 60}, {10, 20, 30, 30}},
      {8, {25, 40}, {10, 20, 30, 40}}, {9, {0, 0}, {10, 20, 30, 40}},
      {-1, {0, 0}, {10, 20, 30, 40}},
  };
  for (const auto& [number, at, resized] : cases) {
    SCOPED_TRACE(number);
    const auto corner = static_cast<TQCorner>(number);
    EXPECT_EQ(TQRectPointForCorner(rect, corner), at);
    EXPECT_EQ(TQRectPointForCorner({40, 60, -30, -40}, corner), at);
    expectFields(TQRectResizeByPuttingCorner({15, 50}, rect, corner), resized);
  }
  for (int edge = 0; const Point mid : {Point{10, 40}, {25, 20}, {40, 40}, {25, 60}, {0, 0}}) {
    EXPECT_EQ(TQRectGetMidOfEdge({40, 60, -30, -40}, static_cast<Edge>(edge++)), mid) << edge;
  }
  // Past the opposite side the extent is negative. Raw and standardised fields are used as
  // documented.
  expectFields(TQRectResizeByPuttingCorner({50, 0}, rect, TQCorner::minXMinY), {50, 0, -10, 60});
  expectFields(TQRectResizeByPuttingCorner({50, 0}, {40, 0, -30, 10}, TQCorner::maxXMidY),
               {40, 0, 10, 10});
}

TEST(RectCorners, TheFirstWithinReachWinsNotTheNearest) {
  const Rows<const char*, Point, double, TQCornerMask, int> cases{
      {"first though farther", {9, 0}, 20, TQCornerMaskOutline, 0},
      {"reach is exclusive", {3, 4}, 5, 1, -1},
      {"the centre is never tried", {5, 5}, 1, 256 | TQCornerMaskOutline, -1},
      {"the last on the outline", {5, 10}, 1, TQCornerMaskOutline, 7},
      {"NaN", {kNaN, 0}, 100, TQCornerMaskOutline, -1},
      {"squares would overflow", {1e200, 0}, 1e201, TQCornerMaskOutline, 0},
  };
  for (const auto& [name, point, reach, mask, expected] : cases) {
    const TQCorner corner = TQRectClosestCornerForPoint(point, reach, mask, {0, 0, 10, 10});
    EXPECT_EQ(static_cast<int>(corner), expected) << name;
  }
}

TEST(RectCorners, APlacedRectHasItsCornerThere) {
  for (const Size size : {Size{4, 6}, {-4, 6}, {-4, -6}, {0, 0}}) {
    for (int i = 0; i <= 8; ++i) {
      const Rect rect = TQRectWithCornerAtPoint(size, {100, 50}, static_cast<TQCorner>(i));
      EXPECT_EQ(TQRectPointForCorner(rect, static_cast<TQCorner>(i)), (Point{100, 50})) << i;
      EXPECT_EQ(rect.size, (Size{std::fabs(size.width), std::fabs(size.height)}));
    }
  }
  expectFields(TQRectWithCornerAtPoint({4, 6}, {1, 2}, static_cast<TQCorner>(9)), RectNull);
  expectFields(TQRectWithCornerAtPoint({2, 3}, {kInf, 0}, TQCorner::minXMinY), RectNull);
}

}  // namespace
