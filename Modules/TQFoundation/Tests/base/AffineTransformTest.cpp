#include <TQFoundation/base/AffineTransform.h>

#include <gtest/gtest.h>

#include <numbers>

namespace tq {
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

TEST(AffineTransform, RotationTurnsTheXAxisTowardsTheYAxis) {
  const Point turned = PointApplyAffineTransform(
      {1, 0}, AffineTransformRotate(AffineTransformIdentity, std::numbers::pi / 2));
  EXPECT_NEAR(turned.x, 0, 1e-15);
  EXPECT_NEAR(turned.y, 1, 1e-15);
}

TEST(AffineTransform, InverseUndoesAndASingularTransformIsReturned) {
  const AffineTransform transform{2, 1, -1, 3, 10, -20};
  const Point back = PointApplyAffineTransform(PointApplyAffineTransform(kPoint, transform),
                                               AffineTransformInvert(transform));
  EXPECT_NEAR(back.x, kPoint.x, 1e-14);
  EXPECT_NEAR(back.y, kPoint.y, 1e-14);
  const AffineTransform singular{1, 2, 2, 4, 5, 6};
  EXPECT_EQ(AffineTransformInvert(singular), singular);
}

TEST(AffineTransform, RectBecomesTheBoundsOfItsCorners) {
  const AffineTransform shear{1, 0, 1, -2, 0, 0};
  EXPECT_EQ(RectApplyAffineTransform({0, 0, 10, 10}, shear), (Rect{0, -20, 20, 20}));
  EXPECT_EQ(RectApplyAffineTransform({10, 10, -10, -10}, shear), (Rect{0, -20, 20, 20}));
  EXPECT_TRUE(RectIsNull(RectApplyAffineTransform(RectNull, shear)));
}

}  // namespace
}  // namespace tq
