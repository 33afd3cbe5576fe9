#include <TQFoundation/geometry/rects/TQRectSafe.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(RectSafe, ReplacesBadNumbersAndKeepsExtentsFromVanishing) {
  expectFields(TQRectSafe({kNaN, kInf, 0, -0.05}), {0.1, 0.1, 0.1, -0.1});
  expectFields(TQRectSafe({-kInf, -0.0, kNaN, -7}), {0.1, -0.0, 0.1, -7});
  EXPECT_EQ(TQPointSafe({kInf, 4}), (Point{0.1, 4}));
}

TEST(RectSafe, PushesAwayFromZeroKeepingTheSign) {
  const struct {
    double value, minimum, expected;
  } cases[] = {{0.0, 2, 2},   {-0.0, 2, 2},   {-1e-300, 2, -2}, {-3, 2, -3},    {3, 2, 3},
               {-kInf, 2, 2}, {kNaN, 0, 0.1}, {5, kNaN, 5},     {-5, kNaN, -5}, {1, kInf, kInf}};
  for (const auto& c : cases) {
    EXPECT_EQ(TQFloatMakeAbsGreaterThanOrEqual(c.value, c.minimum), c.expected)
        << c.value << ", " << c.minimum;
  }
}

TEST(RectSafe, UnionMakesNoExceptionForNullRects) {
  expectFields(TQUnionRectSafe({10, 10, -5, -5}, {7, 0, 1, 20}), {5, 0, 5, 20});
  expectFields(TQUnionRectSafe(RectNull, {1, 2, 3, 4}), {1, 2, kInf, kInf});
  expectFields(TQUnionRectSafe({kNaN, 0, 1, 1}, {3, 0, 1, 1}), {3, 0, 1, 1});
}

}  // namespace
}  // namespace tq
