#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Rect.h>

#include "support/Test.h"

namespace {

constexpr Point kPoint{3, 4};

TEST(AffineTransform, TheOperationAddedLastIsAppliedFirst) {
  const AffineTransform scaled = AffineTransformScale(AffineTransformIdentity, 2, 3);
  EXPECT_EQ(PointApplyAffineTransform(kPoint, AffineTransformTranslate(scaled, 10, 20)),
            (Point{26, 72}));
  const AffineTransform moved = AffineTransformTranslate(AffineTransformIdentity, 10, 20);
  EXPECT_EQ(PointApplyAffineTransform(kPoint, AffineTransformScale(moved, 2, 3)), (Point{16, 32}));
  EXPECT_EQ(SizeApplyAffineTransform({3, 4}, AffineTransformScale(moved, 2, -3)), (Size{6, -12}));
}

TEST(AffineTransform, ConcatAppliesItsFirstArgumentFirst) {
  const AffineTransform first{1, 2, 3, 4, 5, 6};
  const AffineTransform second{-2, 1, 0.5, 3, 7, -8};
  EXPECT_EQ(PointApplyAffineTransform(kPoint, AffineTransformConcat(first, second)),
            PointApplyAffineTransform(PointApplyAffineTransform(kPoint, first), second));
}

void expectNear(Point actual, Point expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-14);
  EXPECT_NEAR(actual.y, expected.y, 1e-14);
}

TEST(AffineTransform, RotationTurnsTheXAxisTowardsTheYAxis) {
  const auto turn = AffineTransformRotate(AffineTransformIdentity, kPi / 2);
  expectNear(PointApplyAffineTransform({1, 0}, turn), {0, 1});
}

TEST(AffineTransform, InverseUndoesAndASingularTransformIsReturned) {
  const AffineTransform transform{2, 1, -1, 3, 10, -20};
  expectNear(PointApplyAffineTransform(PointApplyAffineTransform(kPoint, transform),
                                       AffineTransformInvert(transform)),
             kPoint);
  const AffineTransform singular{1, 2, 2, 4, 5, 6};
  EXPECT_EQ(AffineTransformInvert(singular), singular);
  EXPECT_TRUE(std::isnan(AffineTransformInvert({kNaN, 0, 0, 1, 5, 6}).a));
  EXPECT_EQ(AffineTransformInvert({kNaN, 0, 0, 1, 5, 6}).tx, 5);
}

TEST(AffineTransform, RectBecomesTheBoundsOfItsCorners) {
  const AffineTransform shear{1, 0, 1, -2, 0, 0};
  EXPECT_EQ(RectApplyAffineTransform({0, 0, 10, 10}, shear), (Rect{0, -20, 20, 20}));
  EXPECT_EQ(RectApplyAffineTransform({10, 10, -10, -10}, shear), (Rect{0, -20, 20, 20}));
  EXPECT_TRUE(RectIsNull(RectApplyAffineTransform(RectNull, shear)));
}

constexpr Rect kUnit{0, 0, 10, 10};

TEST(Rect, IsNullOnlyWithAnOriginAtPlusInfinity) {
  EXPECT_TRUE(RectIsNull({kInf, 0, 5, 5}) && RectIsNull({0, kInf, 5, 5}));
  EXPECT_FALSE(RectIsNull({-kInf, -kInf, 0, 0}) || RectIsNull(RectZero));
  expectFields(RectStandardize({3, kInf, -5, 5}), RectNull);
}

TEST(Rect, EqualityStandardisesFirst) {
  EXPECT_TRUE(RectEqualToRect({-10, -20, 30, 40}, {20, 20, -30, -40}));
  EXPECT_TRUE(RectEqualToRect({0.0, 0, 1, 1}, {-0.0, 0, 1, 1}));
  EXPECT_TRUE(RectEqualToRect(RectNull, {kInf, 7, 3, 3}));
  EXPECT_FALSE(RectEqualToRect(RectNull, RectZero) || RectEqualToRect(RectZero, RectNull));
  EXPECT_FALSE(RectEqualToRect({kNaN, 0, 1, 1}, {kNaN, 0, 1, 1}));
}

TEST(Rect, UnionReturnsTheOtherRectRawForANullRectAndUsesTheSecondWhereOneIsNaN) {
  const Rect raw{5, 5, -2, -3};
  expectFields(RectUnion(RectNull, raw), raw);
  expectFields(RectUnion(raw, RectNull), raw);
  expectFields(RectUnion(raw, {10, 10, 0, 0}), {3, 2, 7, 8});  // a rect of size 0 counts as a point
  EXPECT_EQ(RectUnion({kNaN, 0, 1, 1}, {1, 0, 1, 1}).origin.x, 1);
  EXPECT_TRUE(std::isnan(RectUnion({1, 0, 1, 1}, {kNaN, 0, 1, 1}).origin.x));
}

TEST(Rect, IntersectionIsClosedAndKeepsTheExtentOfARectInside) {
  const Rows<const char*, Rect, Rect, Rect> cases{
      {"shared edge", kUnit, {0, 10, 10, 5}, {0, 10, 10, 0}},
      {"shared corner", kUnit, {10, 10, 1, 1}, {10, 10, 0, 0}},
      {"disjoint", kUnit, {10.5, 0, 1, 1}, RectNull},
      {"disjoint in y", kUnit, {0, 10.5, 1, 1}, RectNull},
      {"negative extents", {10, 10, -10, -10}, {12, 5, -4, 2}, {8, 5, 2, 2}},
      {"point inside", kUnit, {3, 4, 0, 0}, {3, 4, 0, 0}},
      {"inside keeps 0.1", {-1e9, 0, 2e9, 10}, {0.3, 1, 0.1, 1}, {0.3, 1, 0.1, 1}},
      {"null", kUnit, RectNull, RectNull},
      {"null first", RectNull, kUnit, RectNull},
      {"NaN", kUnit, {kNaN, 0, 1, 1}, RectNull},
      {"infinite", RectInfinite, kUnit, kUnit},
  };
  for (const auto& [name, a, b, expected] : cases) {
    SCOPED_TRACE(name);
    expectFields(RectIntersection(a, b), expected);
    EXPECT_EQ(RectIntersectsRect(a, b), !RectIsNull(expected));
    EXPECT_EQ(RectIntersectsRect(b, a), !RectIsNull(expected));
  }
}

TEST(Rect, ContainsPointsHalfOpenAndRectsByTheirUnion) {
  EXPECT_TRUE(RectContainsPoint(kUnit, {0, 0}));
  for (const Point outside : {Point{10, 0}, {-1, 0}, {0, 10}, {0, -1}}) {
    EXPECT_FALSE(RectContainsPoint(kUnit, outside));
  }
  EXPECT_TRUE(RectContainsPoint({10, 10, -10, -10}, {0, 9}));
  for (const Rect& empty : {Rect(0, 0, 0, 10), Rect(0, 0, 10, 0), RectNull}) {
    EXPECT_TRUE(RectIsEmpty(empty) && !RectContainsPoint(empty, empty.origin));
  }
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
