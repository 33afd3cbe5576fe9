#include <TQFoundation/geometry/rects/TQRectRounding.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(RectRounding, RoundsEachFieldAndMultipliesByTheInverseStep) {
  expectFields(TQRectByRoundingRect({0.5, -0.5, 2.4999, -0.2}), {1, -1, 2, -0.0});
  expectFields(TQRectByRoundingRectToStep({7, -7, 1, 0.9}, 2), {8, -8, 2, 0});
  // Near a tie they part: 0.35 / 0.1 is just below 3.5, 0.35 × (1 / 0.1) is 3.5.
  EXPECT_EQ(TQFloatRoundToStep(0.35, 0.1), 3 * 0.1);
  EXPECT_EQ(TQRectByRoundingRectToStep({0.35, 0, 0, 0}, 0.1).origin.x, 4 * 0.1);
  EXPECT_TRUE(std::isnan(TQFloatRoundToStep(1, 0)));
  EXPECT_TRUE(std::isnan(TQFloatRoundToStep(1, kInf)));
}

}  // namespace
}  // namespace tq
