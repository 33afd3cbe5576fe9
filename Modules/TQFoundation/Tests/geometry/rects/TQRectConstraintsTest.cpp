#include <TQFoundation/geometry/rects/TQRectConstraints.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

using C = TQRectConstraints;

constexpr C bits(unsigned value) { return static_cast<C>(value); }

TEST(RectConstraints, PinnedPartsStayAndFlexibleOnesShare) {
  // In an area of 100: 20 before, 50 wide, 30 behind. It becomes 200, then 60.
  const struct {
    const char* name;
    unsigned pinned;
    double originAt200, extentAt200, originAt60, extentAt60, minimum;
  } cases[] = {
      {"nothing", 0, 40, 100, 12, 30, 0},
      {"min", 1, 20, 112.5, 20, 25, 20},
      {"size", 2, 60, 50, 4, 50, 50},
      {"min, size", 3, 20, 50, 20, 50, 70},
      {"max", 4, 170 - 170 * 50.0 / 70, 170 * 50.0 / 70, 30 - 30 * 50.0 / 70, 30 * 50.0 / 70, 30},
      {"min, max", 5, 20, 150, 20, 10, 50},
      {"size, max", 6, 120, 50, -20, 50, 80},
      {"all, and unknown bits", 7 | 1U << 20, 20, 50, 20, 50, 100},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Rect rect{20, 70, 50, -50};  // the same on both axes once standardised
    const auto pinned = bits(c.pinned | c.pinned << 3);
    const auto scaled = [&](double side) {
      return TQRectScaledRelativeToSizeWithConstraints(rect, {100, 100}, {side, side}, pinned);
    };
    const Rect large = scaled(200), small = scaled(60);
    EXPECT_DOUBLE_EQ(large.origin.x, c.originAt200);
    EXPECT_DOUBLE_EQ(large.size.width, c.extentAt200);
    EXPECT_NEAR(small.origin.x, c.originAt60, 1e-14);
    EXPECT_DOUBLE_EQ(small.size.width, c.extentAt60);
    for (const Rect& r : {large, small}) {
      EXPECT_EQ(r.origin.x, r.origin.y);
      EXPECT_EQ(r.size.width, r.size.height);
    }
    const Size least = TQMinumumSizeForRectWithConstraints(rect, {100, 100}, pinned);
    EXPECT_EQ(least, (Size{c.minimum, c.minimum}));
  }
}

TEST(RectConstraints, AxesAreApartDegenerateAreasShareEquallyAndExtentsStopAtZero) {
  const auto x = [](const Rect& rect, double from, double to, C pinned) {
    return TQRectScaledRelativeToSizeWithConstraints(rect, {from, 1}, {to, 1}, pinned);
  };
  const auto apart = C::minX | C::width | C::maxY | C::height;
  expectFields(
      TQRectScaledRelativeToSizeWithConstraints({10, 10, 10, 10}, {40, 40}, {80, 80}, apart),
      {10, 50, 10, 10});
  expectFields(x({0, 0, 0, 1}, 0, 30, C::none), {10, 0, 10, 1});     // thirds of nothing
  expectFields(x({0, 0, 50, 1}, 50, 90, C::width), {20, 0, 50, 1});  // no distances to scale
  expectFields(x({20, 0, 50, 1}, 100, 10, C::maxX), {-20, 0, 0, 1});
  EXPECT_EQ(TQMinumumSizeForRectWithConstraints({-30, 0, 20, 1}, {100, 1}, C::minX | C::width),
            (Size{0, 0}));
  expectFields(x(RectNull, 10, 20, C::none), RectNull);
  EXPECT_EQ(TQMinumumSizeForRectWithConstraints(RectNull, {1, 1}, C::width), (Size{}));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(x({20, 0, 50, 1}, nan, 10, C::none).size.width));
}

}  // namespace
}  // namespace tq
