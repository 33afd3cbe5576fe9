#include <TQFoundation/geometry/values/Rounder.h>

#include <random>

#include <TQFoundation/geometry/values/TQRounder.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

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
      {"the value's sign decides, not the result's", 10, -1, 4, 5, -6},
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
  EXPECT_EQ(rounded(-0.1, 2.0), rounded(0.1, 2.0));
  const std::hash<Rounded<double>> hash;
  EXPECT_EQ(hash(rounded(-0.1, 2.0)), hash(rounded(0.1, 2.0)));
}

}  // namespace
}  // namespace tq
