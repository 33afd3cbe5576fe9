#include <TQFoundation/geometry/values/AnchoredRect.h>
#include <TQFoundation/geometry/values/AspectRatio.h>
#include <TQFoundation/geometry/values/GeometrySystem.h>
#include <TQFoundation/geometry/values/Length.h>
#include <TQFoundation/geometry/values/Rounder.h>
#include <TQFoundation/geometry/values/TQRounder.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include "support/Test.h"

namespace {

TEST(VectorAlgebra, ExtremesNeitherOverflowNorVanishAndSmallAnglesKeepTheirDigits) {
  for (const double scale : {1.0, 1e300, 1e-300, 4 * kTiny}) {
    const Vector v = Vector{3, 4} * scale;
    EXPECT_DOUBLE_EQ(VectorGetLength(v), 5 * scale);
    EXPECT_NEAR(VectorNormalise(v).dx, 0.6, 1e-15) << scale;
    EXPECT_NEAR(VectorNormalise(v).dy, 0.8, 1e-15) << scale;
    EXPECT_NEAR(VectorAngleBetween(v, VectorGetPerpendicular(v)), kPi / 2, 1e-15) << scale;
  }
  EXPECT_EQ(VectorNormalise({}), (Vector{}));
  EXPECT_EQ(VectorProject({3, 4}, {}), (Vector{}));
  for (const Vector v : {Vector{1, 1}, {1, -1}, {-1, -1}, {-0.0, -0.0}, {}}) {
    EXPECT_EQ(VectorAngleBetween({}, v), 0);
    EXPECT_EQ(VectorAngleBetween(v, {}), 0);
  }
  EXPECT_TRUE(std::isnan(VectorNormalise({std::nan(""), 1}).dx));
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

TEST(Length, ConvertsAtAResolutionAndReadsItsSymbols) {
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

TEST(Rounder, RoundsHalvesAwayFromZeroLikeTheLibraryRound) {
  const unsigned seed = 88;
  SCOPED_TRACE(seed);
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> exponents(-10, 60);
  for (int i = 0; i < 4000; ++i) {
    const double half = std::floor(std::exp2(exponents(random))) + 0.5;
    for (const double x : {half, std::nextafter(half, 0), std::nextafter(half, kInf)}) {
      ASSERT_EQ(TQFloatRoundHalfAwayFromZero(x), std::round(x)) << x;
      ASSERT_EQ(TQFloatRoundHalfAwayFromZero(-x), std::round(-x)) << x;
      const auto narrow = static_cast<float>(x);
      ASSERT_EQ(TQFloatRoundHalfAwayFromZero(narrow), std::round(narrow)) << x;
    }
  }
  for (const double x : {0.49999999999999994, -0.0, -0.3, kInf, -kInf, kMax}) {
    EXPECT_PRED2(sameNumber, TQFloatRoundHalfAwayFromZero(x), std::round(x));
  }
  const float belowHalf = std::nextafter(0.5F, 0.0F);  // rounds up with the constant for doubles
  EXPECT_EQ(Rounder<float>().round(belowHalf), 0);
  EXPECT_EQ(Rounder<long double>(2).round(7), 8);
}

TEST(Rounder, AlignsToABaseAndStepsToAMinimumMagnitude) {
  const Rows<const char*, double, double, double, double, double> cases{
      {"whole", 1, 2.5, 0, 0, 3},
      {"minus seven", 2, -7, 0, 0, -8},
      {"half", 0.5, 0.26, 0, 0, 0.5},
      {"NaN", kNaN, 2.7, 0, 0, 2.7},
      {"infinite", kInf, 2.7, 0, 0, kNaN},
      {"negative", -2, 7, 0, 0, 8},
      {"to minus zero", 1, -0.3, 0, 0, -0.0},
      {"value NaN", 2, kNaN, 0, 0, kNaN},
      {"base, from above", 1, 2.7, 0.5, 0, 2.5},
      {"tie away from the base", 1, 3.0, 0.5, 0, 3.5},
      {"no grid", 0, 2.3, 0.5, 0, 2.3 - 0.5 + 0.5},
      {"steps up", 1, 1.2, 0, 3, 3},
      {"the value's sign decides, not the result's", 10, -1, 3, 5, -7},
      {"zero increment up", 0, 1.2, 0, 3, 3},
      {"negative increment goes the other way", -1, 2, 0, 3, -3},
      {"minimum NaN", 1, 1.2, 0, kNaN, 1},
      {"increment NaN", kNaN, 1.2, 0, 3, kNaN},
      {"infinite minimum", 1, 1.2, 0, kInf, kInf},
      {"far away", 1, 1, 0, 3e12 + 0.5, 3e12 + 1},
      {"denormal steps", std::numeric_limits<double>::denorm_min(), 0, 0, kMax, kMax},
  };
  for (const auto& [name, increment, value, base, minimum, expected] : cases) {
    SCOPED_TRACE(name);
    const Rounder<double> rounder(increment);
    if (base == 0 && minimum == 0) {
      EXPECT_PRED2(sameNumber, rounder.round(value), expected);
      EXPECT_PRED2(sameNumber, rounded(value, increment).value(), expected);
      continue;
    }
    const Ref<TQRounder> object = TQRounder::initWithRoundingIncrement(increment);
    EXPECT_PRED2(sameNumber, object->alignValue(value, base, minimum), expected);
  }
}

TEST(Rounder, StepsOneByOneAndJumpsWhereSingleStepsWouldLand) {
  const Rows<double, double, double, double> cases{
      {0, 0, 0.001, 2000},              // two million steps, all rounded
      {0.75, 0.8, 0.25, 5'000'000.1}};  // 20 million, all exact
  for (const auto& [start, value, increment, minimum] : cases) {
    double stepped = start;
    while (minimum > stepped) stepped += increment;
    EXPECT_EQ(Rounder<double>(increment).align(value, 0, minimum), stepped);
  }
}

TEST(Rounder, MasksChooseComponentsAndTheObjectFollowsItsRounder) {
  const Rounder<double> rounder;
  const Ref<TQRounder> object = TQRounder::init();
  const Rows<AxisMask, double, double> cases{{AxisMask::none, 1.4, 1.6},
                                             {AxisMask::horizontal, 1, 1.6},
                                             {AxisMask::vertical, 1.4, 2},
                                             {AxisMask::both, 1, 2}};
  for (const auto& [mask, first, second] : cases) {
    EXPECT_EQ(object->roundPoint({1.4, 1.6}, mask), (Point{first, second}));
    EXPECT_EQ(object->roundSize({1.4, 1.6}, mask), (Size{first, second}));
    EXPECT_EQ(object->roundVector({1.4, 1.6}, mask), (Vector{first, second}));
  }
  Point aligned{1.4, 1.6};
  rounder.alignInPlace(aligned, {0.5, 0.25}, AxisMask::vertical);
  EXPECT_EQ(aligned, (Point{1.4, 1.25}));
  EXPECT_EQ(rounder.align(Point{1.4, 1.6}, {0.5, 0.25}), (Point{1.5, 1.25}));
  object->setRoundingIncrement(2);
  EXPECT_EQ(object->roundValue(2.5), 2);
  object->setRounder(Rounder<double>(5));
  EXPECT_EQ(object->roundValue(2.6), 5);
  EXPECT_EQ(object->alignValue(2.6, 1), 1);
}

TEST(Rounder, RoundedEqualsByGridAndHashesBothZerosAlike) {
  EXPECT_NE(rounded(2.0, 2.0), rounded(2.0, 1.0));
  EXPECT_EQ(rounded(2.4, 1), rounded(2.4, 1.0));
  EXPECT_EQ(rounded(-0.1, 2.0), rounded(0.1, 2.0));
  const std::hash<Rounded<double>> hash;
  EXPECT_EQ(hash(rounded(-0.1, 2.0)), hash(rounded(0.1, 2.0)));
}

}  // namespace
