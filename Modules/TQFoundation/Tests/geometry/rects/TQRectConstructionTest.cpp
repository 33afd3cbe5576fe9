#include <iterator>
#include <random>

#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>
#include <TQFoundation/geometry/values/AspectRatio.h>

#include "support/Test.h"

namespace {

TEST(RectConstruction, FromPointsSizesAndMargins) {
  for (const Point p : {Point{1, 2}, {4, 2}, {1, 9}, {4, 9}}) {
    expectFields(TQRectFromPoints(p, {5 - p.x, 11 - p.y}), {1, 2, 3, 7});
  }
  expectFields(TQRectWithSizeCenteredAtPoint({4, -6}, {10, 20}), {8, 23, 4, -6});
  expectFields(TQRectWithSizeCenteredInRect({4, 6}, {20, 20, -10, 10}), {13, 22, 4, 6});
  expectFields(TQRectWithMarginAroundPoint(3, {1, 2}), {-2, -1, 6, 6});
  expectFields(TQRectPointUnion({5, -1}, {0, 0, 2, 2}), {0, -1, 5, 3});
  expectFields(TQRectPointUnion({5, -1}, RectNull), {5, -1, 0, 0});
}

TEST(RectConstruction, ExtentsGrowFlipAndResizeByEdges) {
  expectFields(TQRectWithMinSize({10, 2}, {0, 0, 4, 4}), {-3, 0, 10, 4});
  expectFields(TQRectWithMinSize({2, 10}, {0, 0, -4, 2}), {-3, -4, 2, 10});  // -4 is below 2
  const Rect rect{1, 2, 3, 4};
  expectFields(TQRectFlip(rect, AxisMask::horizontal), {4, 2, -3, 4});
  expectFields(TQRectFlip(rect, AxisMask::both), {4, 6, -3, -4});
  expectFields(TQRectFlip(rect, static_cast<AxisMask>(4)), rect);
  expectFields(TQRectWithMidX(0, {10, 20, -4, 6}), {2, 20, -4, 6});
  expectFields(TQRectWithMidY(0, {10, 20, 4, 6}), {10, -3, 4, 6});
  expectFields(TQRectResizeMinXTo(11, {10, 20, 4, 6}), {11, 20, 3, 6});
  expectFields(TQRectResizeMinYTo(30, {10, 20, 4, 6}), {10, 30, 4, -4});
  expectFields(TQRectResizeMaxYTo(21, {10, 20, 4, 6}), {10, 20, 4, 1});
  expectFields(TQRectResizeMaxXTo(16, {14, 26, -4, -6}), {10, 26, 6, -6});
}

TEST(RectMoving, IntoAContainerTheMinimumSideWins) {
  const Rect container{0, 0, 100, 50};
  const Rows<const char*, Rect, Rect> cases{
      {"beyond both maxima", {95, 45, 20, 20}, {80, 30, 20, 20}},
      {"before both minima", {-5, -7, 20, 20}, {0, 0, 20, 20}},
      {"wider than the container", {30, 10, 120, 20}, {0, 10, 120, 20}},
      {"negative extents count by magnitude", {120, 60, -10, -10}, {90, 40, -10, -10}},
  };
  for (const auto& [name, rect, moved] : cases) {
    SCOPED_TRACE(name);
    expectFields(TQRectMoveIntoRect(rect, container), moved);
  }
  // Constant evaluation takes a path of its own.
  constexpr Rect moved = TQRectMoveIntoRect({120, -7, -10, -10}, {0, 0, 100, 50});
  expectFields(moved, {90, 0, -10, -10});
  // The container's minimum is its raw origin.
  expectFields(TQRectMoveIntoRect({10, 0, 5, 5}, {40, 0, -40, 10}), {40, 0, 5, 5});

  // The steps as they are defined, on numbers of every kind.
  const double numbers[] = {0, -0.0, 1, -1, 0.1, -0.3, 50, kTiny, kMax, -kMax, kInf, -kInf, kNaN};
  std::mt19937_64 random(4);
  const auto number = [&] { return numbers[random() % std::size(numbers)]; };
  for (int i = 0; i < 20'000; ++i) {
    const Rect rect(number(), number(), number(), number());
    const Rect into(number(), number(), number(), number());
    const double right = RectGetMaxX(into), top = RectGetMaxY(into);
    auto [x, y] = rect.origin;
    if (right < RectGetMaxX(rect)) x = right - RectGetWidth(rect);
    if (x < into.origin.x) x = into.origin.x;
    if (top < RectGetMaxY(rect)) y = top - RectGetHeight(rect);
    if (y < into.origin.y) y = into.origin.y;
    expectFields(TQRectMoveIntoRect(rect, into), {{x, y}, rect.size});
  }
}

TEST(RectMoving, TheMiddleIsKeptInside) {
  const Rect container{100, 50, -100, -50};  // standardised: 0, 0, 100, 50
  const auto inside = TQRectByEnsuringMidIsContainedInRect;
  expectFields(inside({-30, 60, 20, 10}, container), {-10, 45, 20, 10});
  expectFields(inside({95, -30, 20, 10}, container), {90, -5, 20, 10});
  EXPECT_EQ(TQRectGetMid(inside({-30, 0, -20, 10}, container)).x, 0);
}

TEST(RectMoving, PaddingsArePositiveInside) {
  const TQEdgePaddings paddings = TQEdgePaddingsMakeWithRects({12, 5, -10, 5}, {0, 0, 20, 30});
  EXPECT_TRUE(TQEdgePaddingsEqualToEdgePaddings(paddings, {20, 2, 5, 8}));
  using P = TQEdgePaddings;
  for (const P& other : {P{21, 2, 5, 8}, {20, 3, 5, 8}, {20, 2, 6, 8}, {20, 2, 5, 9}}) {
    EXPECT_FALSE(TQEdgePaddingsEqualToEdgePaddings(paddings, other));
  }
}

TEST(RectFitting, FitsAndFillsWithTheDocumentedZeroCases) {
  const Rect square{0, 0, 200, 200}, offset{10, 20, 40, 60};
  const Rows<const char*, Size, Rect, Rect, Rect> cases{
      {"wide", {100, 50}, square, {0, 50, 200, 100}, {-100, 0, 400, 200}},
      {"off the origin", {2, 1}, offset, {10, 40, 40, 20}, {-30, 20, 120, 60}},
      {"high", {50, 100}, square, {50, 0, 100, 200}, {0, -100, 200, 400}},
      {"no width", {0, 5}, offset, {30, 20, 0, 60}, {kNaN, -kInf, kNaN, kInf}},
      {"no height", {5, 0}, offset, {10, 50, 40, 0}, {-kInf, kNaN, kInf, kNaN}},
      {"no size", {0, 0}, offset, {30, 20, 0, 60}, {kNaN, -kInf, kNaN, kInf}},
      {"rect without width", {5, 5}, {10, 20, 0, 60}, {10, 50, 0, 0}, {kNaN, kNaN, kNaN, kNaN}},
      {"rect without height", {5, 5}, {10, 20, 40, 0}, {30, 20, 0, 0}, {kNaN, kNaN, kNaN, kNaN}},
      {"rect without either", {5, 5}, {10, 20, 0, 0}, {10, 20, 0, 0}, {10, 20, 0, 0}},
  };
  for (const auto& [name, size, rect, fitted, filled] : cases) {
    SCOPED_TRACE(name);
    expectFields(TQRectWithSizeProportionallyInRect(size, rect), fitted);
    expectFields(TQRectWithSizeProportionallyAroundRect(size, rect), filled);
    if (!AspectRatio::ofSize(size).isValid()) continue;
    expectFields(AspectRatio::ofSize(size).fitted(rect), fitted);
    expectFields(AspectRatio::ofSize(size).filled(rect), filled);
  }
}

TEST(RectFitting, ProportionsFollowOneExtentAndRectsScaleAndExpand) {
  const Rect rect{1, 2, 40, 10};
  expectFields(TQRectWithWidthRespectingProportions(20, rect), {1, 2, 20, 5});
  expectFields(TQRectWithHeightRespectingProportions(20, rect), {1, 2, 80, 20});
  expectFields(TQRectWithWidthRespectingProportions(20, {1, 2, 0, 10}), {1, 2, 20, 10});
  expectFields(TQRectWithHeightRespectingProportions(20, {1, 2, 40, 0}), {1, 2, 40, 20});
  expectFields(TQRectWithSizeOnAxisAspectRatio(Axis::horizontal, 30, 1.5, rect), {1, 2, 30, 20});
  expectFields(TQRectWithSizeOnAxisAspectRatio(Axis::vertical, 30, 1.5, rect), {1, 2, 45, 30});
  expectFields(TQRectScale({1, -2, -3, 4}, 2), {2, -4, -6, 8});
  expectFields(TQRectScale(RectNull, -1), RectNull);
  expectFields(TQRectExpand({10, 10, -4, 6}, 1), {5, 9, 6, 8});
  expectFields(TQRectExpand({0, 0, 10, 4}, -3), {3, 2, 4, 0});  // the y edges stop in the middle
  expectFields(TQRectExpand({0, 0, 4, 10}, -3), {2, 3, 0, 4});
  expectFields(TQRectExpand(RectNull, 5), RectNull);
}

TEST(RectFitting, AbsoluteUndoesRelative) {
  const Rect reference{110, 20, -100, 50};
  expectFields(TQRectRelative({10, 20, 100, 50}, reference), {0, 0, 1, 1});
  expectFields(TQRectAbsolute({0.5, 1, 0.25, -1}, reference), {60, 70, 25, -50});
  expectFields(TQRectFromCoordinateSpaceRectToRect({2, 4, 2, -4}, {0, 0, 8, 8}, {100, 0, 80, 16}),
               {120, 8, 20, -8});
  EXPECT_TRUE(std::isnan(TQRectRelative({1, 1, 0, 1}, {1, 1, 0, 1}).size.width));
  expectFields(TQRectAbsolute(RectNull, reference), RectNull);
  expectFields(TQRectRelative(RectNull, reference), RectNull);
}

using C = TQRectConstraints;

TEST(RectConstraints, PinnedPartsStayAndFlexibleOnesShare) {
  // In an area of 100: 20 before, 50 wide, 30 after. It becomes 200, then 60.
  const Rows<const char*, unsigned, double, double, double, double, double> cases{
      {"nothing", 0, 40, 100, 12, 30, 0},
      {"min", 1, 20, 112.5, 20, 25, 20},
      {"size", 2, 60, 50, 4, 50, 50},
      {"min, size", 3, 20, 50, 20, 50, 70},
      {"max", 4, 170 - 170 * 50.0 / 70, 170 * 50.0 / 70, 30 - 30 * 50.0 / 70, 30 * 50.0 / 70, 30},
      {"min, max", 5, 20, 150, 20, 10, 50},
      {"size, max", 6, 120, 50, -20, 50, 80},
      {"all, and unknown bits", 7 | 1U << 20, 20, 50, 20, 50, 100},
  };
  for (const auto& [name, pinned, originAt200, extentAt200, originAt60, extentAt60, minimum] :
       cases) {
    SCOPED_TRACE(name);
    const Rect rect{20, 70, 50, -50};  // the same on both axes once standardised
    const auto constraints = static_cast<C>(pinned | pinned << 3);
    const auto scaled = [&](double side) {
      return TQRectScaledRelativeToSizeWithConstraints(rect, {100, 100}, {side, side}, constraints);
    };
    const Rect large = scaled(200), small = scaled(60);
    EXPECT_DOUBLE_EQ(large.origin.x, originAt200);
    EXPECT_DOUBLE_EQ(large.size.width, extentAt200);
    EXPECT_NEAR(small.origin.x, originAt60, 1e-14);
    EXPECT_DOUBLE_EQ(small.size.width, extentAt60);
    for (const Rect& r : {large, small}) {
      EXPECT_EQ(r.origin.x, r.origin.y);
      EXPECT_EQ(r.size.width, r.size.height);
    }
    const Size least = TQMinumumSizeForRectWithConstraints(rect, {100, 100}, constraints);
    EXPECT_EQ(least, (Size{minimum, minimum}));
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
  expectFields(x({0, 0, 0, 1}, 0, 30, C::none), {10, 0, 10, 1});     // equal shares
  expectFields(x({0, 0, 50, 1}, 50, 90, C::width), {20, 0, 50, 1});  // no distances to scale
  expectFields(x({20, 0, 50, 1}, 100, 10, C::maxX), {-20, 0, 0, 1});
  EXPECT_EQ(TQMinumumSizeForRectWithConstraints({-30, 0, 20, 1}, {100, 1}, C::minX | C::width),
            (Size{0, 0}));
  expectFields(x(RectNull, 10, 20, C::none), RectNull);
  EXPECT_EQ(TQMinumumSizeForRectWithConstraints(RectNull, {1, 1}, C::width), (Size{}));
  EXPECT_TRUE(std::isnan(x({20, 0, 50, 1}, kNaN, 10, C::none).size.width));
}

}  // namespace
