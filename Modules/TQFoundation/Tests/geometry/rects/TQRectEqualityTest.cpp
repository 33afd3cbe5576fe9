#include <TQFoundation/geometry/rects/TQRectEquality.h>

#include <bit>
#include <cstdint>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

double stepsAbove(double value, std::uint64_t steps) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) + steps);
}

// The rect of four components of which one is `value` and the others are 1.
Rect with(int component, double value) {
  double c[4] = {1, 1, 1, 1};
  c[component] = value;
  return {c[0], c[1], c[2], c[3]};
}

TEST(RectEquality, TolerancesAreInclusiveExclusiveOrInLastPlaces) {
  const struct {
    const char* name;
    double a, b;
    bool within, approximately, fuzzily;
  } cases[] = {
      {"255 steps", 1, stepsAbove(1, 255), true, true, true},
      {"256 steps", 1, stepsAbove(1, 256), true, false, true},
      {"255 steps below zero", -stepsAbove(1, 255), -1, true, true, true},
      {"zeros of both signs", 0.0, -0.0, true, true, true},
      {"denormals of both signs", kTiny, -kTiny, true, false, true},
      {"just the accuracy", 0.25, 0, true, false, false},
      {"beyond it", 0.26, 0, false, false, false},
      {"NaN never makes unequal, but for a thousandth", kNaN, 1, true, true, false},
      {"largest and infinite are neighbours", std::numeric_limits<double>::max(), kInf, false, true,
       false},
      {"infinities of both signs", kInf, -kInf, false, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    for (int i = 0; i < 4; ++i) {
      const Rect a = with(i, c.a);
      const Rect b = with(i, c.b);
      EXPECT_EQ(TQRectEqualToRectWithAccuracy(a, b, 0.25), c.within);
      EXPECT_EQ(TQRectApproximatelyEqual(a, b), c.approximately);
      EXPECT_EQ(TQRectApproximatelyEqual(b, a), c.approximately);
      EXPECT_EQ(TQRectFuzzyEqualToRect(a, b), c.fuzzily);
    }
    EXPECT_EQ(TQPointEqualToPointWithAccuracy({0, c.a}, {0, c.b}, 0.25), c.within);
    EXPECT_EQ(TQSizeEqualToSizeWithAccuracy({c.a, 0}, {c.b, 0}, 0.25), c.within);
    EXPECT_EQ(TQPointApproximatelyEqual({c.a, 0}, {c.b, 0}), c.approximately);
    EXPECT_EQ(TQSizeApproximatelyEqual({0, c.a}, {0, c.b}), c.approximately);
  }
}

TEST(RectEquality, FieldsAreRaw) {
  EXPECT_FALSE(TQRectFuzzyEqualToRect({0, 0, 5, 5}, {5, 5, -5, -5}));
}

}  // namespace
}  // namespace tq
