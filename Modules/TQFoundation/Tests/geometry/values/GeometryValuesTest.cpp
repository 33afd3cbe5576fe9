#include <random>

#include <TQFoundation/geometry/values/AnchoredRect.h>
#include <TQFoundation/geometry/values/AspectRatio.h>
#include <TQFoundation/geometry/values/GeometrySystem.h>
#include <TQFoundation/geometry/values/Length.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

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

TEST(Length, ConvertsAtAResolution) {
  const Rows<Length, LengthUnit, double> cases{
      {{1, LengthUnit::in}, LengthUnit::px, 96},   {{48, LengthUnit::px}, LengthUnit::pt, 36},
      {{25.4, LengthUnit::mm}, LengthUnit::in, 1}, {{2.54, LengthUnit::cm}, LengthUnit::pc, 6},
      {{1, LengthUnit::pc}, LengthUnit::pt, 12},   {{0.1, LengthUnit::mm}, LengthUnit::mm, 0.1},
      {{-72, LengthUnit::pt}, LengthUnit::in, -1},
  };
  for (const auto& [from, to, expected] : cases) {
    const Length converted = from.converted(to, 96);
    EXPECT_DOUBLE_EQ(converted.value, expected);
    EXPECT_EQ(converted.unit, to);
  }
  const auto unknown = static_cast<LengthUnit>(6);
  EXPECT_TRUE(std::isnan((Length{1, unknown}).converted(unknown, 96).value));
  EXPECT_EQ(LengthUnitSymbol(unknown), "");
}

TEST(Length, SymbolsReadBack) {
  for (int i = 0; i < 6; ++i) {
    const auto unit = static_cast<LengthUnit>(i);
    EXPECT_EQ(LengthUnitFromSymbol(LengthUnitSymbol(unit)), unit);
  }
  EXPECT_EQ(LengthUnitFromSymbol("mm"), LengthUnit::mm);
  EXPECT_EQ(LengthUnitFromSymbol("MM"), std::nullopt);
}

TEST(AspectRatio, ComparesProportionsAndKnowsBadOnes) {
  EXPECT_EQ((AspectRatio{4, 2}), (AspectRatio{2, 1}));
  EXPECT_NE((AspectRatio{4, 2}), (AspectRatio{4, 2}).flipped());
  EXPECT_EQ((AspectRatio{16, 9}).heightForWidth(1920), 1080);
  EXPECT_EQ((AspectRatio{16, 9}).widthForHeight(1080), 1920);
  EXPECT_TRUE(AspectRatio::ofSize({1, 1e300}).isValid());
  for (const Size bad : {Size{0, 1}, {1, -1}, {kInf, 1}, {1, kNaN}}) {
    EXPECT_FALSE(AspectRatio::ofSize(bad).isValid());
  }
}

TEST(AnchoredRect, GrowsAwayFromItsAnchor) {
  const auto held = AnchoredRect::hold({10, 20, -10, -20}, TQCorner::maxXMaxY);
  expectFields(held.rect(), {0, 0, 10, 20});
  expectFields(held.resized({4, 4}).rect(), {6, 16, 4, 4});
  expectFields(held.moved({0, 0}).rect(), {-10, -20, 10, 20});
  const AnchoredRect centred = held.anchoredAt(TQCorner::center);
  expectFields(centred.rect(), held.rect());
  expectFields(centred.resized({2, 2}).rect(), {4, 9, 2, 2});
  EXPECT_TRUE(RectIsNull(AnchoredRect::hold({1, 1, 1, 1}, static_cast<TQCorner>(9)).rect()));
}

TEST(GeometrySystem, MapsItsBoundsOntoItsFrame) {
  const auto system = GeometrySystem::withFrame({100, 100, 40, 20}, {10, 5, -10, 10});
  expectFields(system.rectToParent({0, 5, 10, 10}), {100, 100, 40, 20});
  EXPECT_EQ(system.pointToParent({5, 10}), (Point{120, 110}));
  EXPECT_EQ(system.pointFromParent({120, 110}), (Point{5, 10}));
  expectFields(system.rectFromParent({100, 100, 4, 2}), {0, 5, 1, 1});
  const auto point = GeometrySystem::withFrame({3, 3, 5, 5}, {1, 1, 0, 0});
  EXPECT_EQ(point.pointToParent({2, 1}), (Point{4, 3}));  // empty bounds: the scale is 1

  const auto turned = GeometrySystem::withTransform({0, 0, 2, 1}, {0, 1, -1, 0, 0, 0});
  expectFields(turned.frame, {-1, 0, 1, 2});
  const auto held = AnchoredRect::hold({0, 0, 1, 1}, TQCorner::minXMinY).toParentOf(turned);
  EXPECT_EQ(held.position, (Point{-1, 0}));
}

}  // namespace
}  // namespace tq
