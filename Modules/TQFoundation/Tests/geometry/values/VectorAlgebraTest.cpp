#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include <random>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(VectorAlgebra, ExtremesNeitherOverflowNorVanish) {
  for (const double scale : {1.0, 1e300, 1e-300, 4 * kTiny}) {
    const Vector v = Vector{3, 4} * scale;
    EXPECT_DOUBLE_EQ(VectorGetLength(v), 5 * scale);
    EXPECT_NEAR(VectorNormalise(v).dx, 0.6, 1e-15) << scale;
    EXPECT_NEAR(VectorNormalise(v).dy, 0.8, 1e-15) << scale;
    EXPECT_NEAR(VectorAngleBetween(v, VectorGetPerpendicular(v)), kPi / 2, 1e-15) << scale;
  }
  EXPECT_EQ(VectorNormalise({}), (Vector{}));
  EXPECT_EQ(VectorProject({3, 4}, {}), (Vector{}));
  EXPECT_EQ(VectorAngleBetween({}, {1, 1}), 0);
  EXPECT_TRUE(std::isnan(VectorNormalise({std::nan(""), 1}).dx));
}

TEST(VectorAlgebra, AnglesKeepTheirDigitsNearZeroAndTurnTheShortWay) {
  EXPECT_EQ(VectorAngleBetween({1, 0}, {1, 1e-9}), 1e-9);
  EXPECT_EQ(VectorAngleBetween({1, 0}, {-1, 0}), kPi);
  EXPECT_EQ(VectorProject({3, 4}, {-10, 0}), (Vector{3, 0}));
}

TEST(VectorAlgebra, PolarAndRotationAgree) {
  std::mt19937_64 random(31);
  std::uniform_real_distribution<double> numbers(-100, 100);
  for (int i = 0; i < 1000; ++i) {
    const Vector v{numbers(random), numbers(random)};
    const PolarVector polar = PolarFromVector(v);
    const Vector back = VectorFromPolar(polar);
    ASSERT_LT(VectorGetLength(back - v), 1e-12);
    const double turn = numbers(random) / 50;
    const Vector turned = VectorRotate(v, turn);
    const Vector byPolar = VectorFromPolar({polar.length, polar.angleRadians + turn});
    ASSERT_LT(VectorGetLength(turned - byPolar), 1e-12);
    ASSERT_NEAR(VectorAngleBetween(v, turned), turn, 1e-13);
    ASSERT_NEAR(VectorDotProduct(v, VectorGetPerpendicular(v)), 0, 1e-12);
  }
  EXPECT_EQ((Point{5, 5} + Vector{2, 1}) - (Point{5, 5}), (2 * Vector{4, 2} / 4));
}

}  // namespace
}  // namespace tq
