#include <TQFoundation/base/Rect.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tq {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Rect kUnit{0, 0, 10, 10};

void expectRaw(const Rect& actual, const Rect& expected) {
  EXPECT_EQ(actual.origin.x, expected.origin.x);
  EXPECT_EQ(actual.origin.y, expected.origin.y);
  EXPECT_EQ(actual.size.width, expected.size.width);
  EXPECT_EQ(actual.size.height, expected.size.height);
}

TEST(Rect, IsNullOnlyWithAnOriginAtPlusInfinity) {
  EXPECT_TRUE(RectIsNull({kInf, 0, 5, 5}));
  EXPECT_TRUE(RectIsNull({0, kInf, 5, 5}));
  EXPECT_FALSE(RectIsNull({-kInf, -kInf, 0, 0}));
  EXPECT_FALSE(RectIsNull(RectZero));
  expectRaw(RectStandardize({3, kInf, -5, 5}), RectNull);
}

TEST(Rect, EqualityStandardisesFirst) {
  EXPECT_TRUE(RectEqualToRect({-10, -20, 30, 40}, {20, 20, -30, -40}));
  EXPECT_TRUE(RectEqualToRect({0.0, 0, 1, 1}, {-0.0, 0, 1, 1}));
  EXPECT_TRUE(RectEqualToRect(RectNull, {kInf, 7, 3, 3}));
  EXPECT_FALSE(RectEqualToRect(RectNull, RectZero));
  EXPECT_FALSE(RectEqualToRect({kNaN, 0, 1, 1}, {kNaN, 0, 1, 1}));
}

TEST(Rect, UnionWithANullRectReturnsTheOtherRectRaw) {
  const Rect raw{5, 5, -2, -3};
  expectRaw(RectUnion(RectNull, raw), raw);
  expectRaw(RectUnion(raw, RectNull), raw);
  expectRaw(RectUnion(raw, {10, 10, 0, 0}), {3, 2, 7, 8});  // a rect of size 0 counts as a point
}

TEST(Rect, UnionUsesTheSecondRectWhereOneIsNaN) {
  EXPECT_EQ(RectUnion({kNaN, 0, 1, 1}, {1, 0, 1, 1}).origin.x, 1);
  EXPECT_TRUE(std::isnan(RectUnion({1, 0, 1, 1}, {kNaN, 0, 1, 1}).origin.x));
}

TEST(Rect, IntersectionIsClosedAndKeepsTheExtentOfARectInside) {
  const struct {
    const char* name;
    Rect a, b, expected;
  } cases[] = {
      {"shared edge", kUnit, {0, 10, 10, 5}, {0, 10, 10, 0}},
      {"shared corner", kUnit, {10, 10, 1, 1}, {10, 10, 0, 0}},
      {"disjoint", kUnit, {10.5, 0, 1, 1}, RectNull},
      {"negative extents", {10, 10, -10, -10}, {12, 5, -4, 2}, {8, 5, 2, 2}},
      {"point inside", kUnit, {3, 4, 0, 0}, {3, 4, 0, 0}},
      {"inside keeps 0.1", {-1e9, 0, 2e9, 10}, {0.3, 1, 0.1, 1}, {0.3, 1, 0.1, 1}},
      {"null", kUnit, RectNull, RectNull},
      {"NaN", kUnit, {kNaN, 0, 1, 1}, RectNull},
      {"infinite", RectInfinite, kUnit, kUnit},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    expectRaw(RectIntersection(c.a, c.b), c.expected);
    EXPECT_EQ(RectIntersectsRect(c.a, c.b), !RectIsNull(c.expected));
    EXPECT_EQ(RectIntersectsRect(c.b, c.a), !RectIsNull(c.expected));
  }
}

TEST(Rect, ContainsPointsHalfOpenAndRectsByTheirUnion) {
  EXPECT_TRUE(RectContainsPoint(kUnit, {0, 0}));
  EXPECT_FALSE(RectContainsPoint(kUnit, {10, 0}));
  EXPECT_TRUE(RectContainsPoint({10, 10, -10, -10}, {0, 9}));
  EXPECT_FALSE(RectContainsPoint({0, 0, 0, 10}, {0, 0}));
  EXPECT_TRUE(RectContainsRect(kUnit, {10, 10, -10, -10}));
  EXPECT_TRUE(RectContainsRect(RectZero, RectNull));
  EXPECT_FALSE(RectContainsRect(kUnit, {5, 5, 6, 1}));
}

TEST(Rect, MiddleIsMinimumPlusHalfTheExtent) {
  const double x = 0.1, width = 0.7;
  EXPECT_EQ(RectGetMidX({x, 0, width, 0}), x + width / 2);
  EXPECT_EQ(RectGetMidY({0, 4, 0, -4}), 2);
  EXPECT_EQ(RectGetMaxX({10, 0, -4, 0}), 10);
  EXPECT_EQ(RectGetWidth({10, 0, -4, 0}), 4);
  EXPECT_FALSE(std::signbit(RectGetWidth({10, 0, -0.0, 0})));
}

}  // namespace
}  // namespace tq
