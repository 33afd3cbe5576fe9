#include <climits>
#include <string>

#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

constexpr auto kX = Axis::horizontal;
constexpr auto kY = Axis::vertical;
constexpr auto kOther = static_cast<Axis>(9);

TEST(Axis, MasksAndFlipsTakeAnyValue) {
  EXPECT_EQ(TQAxisMaskMake(false, true), AxisMask::vertical);
  EXPECT_EQ(TQAxisMaskFromAxis(kY), AxisMask::vertical);
  EXPECT_EQ(TQAxisMaskFromAxis(static_cast<Axis>(-1)), AxisMask::none);
  EXPECT_EQ(TQAxisMaskFromAxis(static_cast<Axis>(32)), AxisMask::none);
  EXPECT_EQ(TQAxisFlip(kX), kY);
  EXPECT_EQ(TQAxisFlip(TQAxisFlip(static_cast<Axis>(INT_MIN))), static_cast<Axis>(INT_MIN));
  EXPECT_EQ(TQAxisMaskFlip(AxisMask::horizontal), AxisMask::vertical);
}

TEST(Corner, EnumerationLeavesOutTheCentreAndStopsAtTheAnswer) {
  std::string seen;
  TQCornerEnumerate([&](TQCorner corner) { seen += std::to_string(static_cast<int>(corner)); });
  EXPECT_EQ(seen, "01234567");
  int asked = 0;
  const auto fifth = [&](TQCorner corner) { return ++asked, corner >= TQCorner::minXMidY; };
  EXPECT_EQ(TQCornerFirstCornerSatisfyingPredicate(fifth), TQCorner::minXMidY);
  EXPECT_EQ(asked, 6);
  const auto centre = [](TQCorner corner) { return corner == TQCorner::center; };
  EXPECT_EQ(static_cast<int>(TQCornerFirstCornerSatisfyingPredicate(centre)), -1);
  EXPECT_EQ(TQCornerMaskFromCorner(TQCorner::center), 256U);
  EXPECT_EQ(TQCornerMaskFromCorner(static_cast<TQCorner>(40)), 0U);
}

TEST(RectAxis, ReadsAndMovesEitherSignOfExtent) {
  for (const Rect& rect : {Rect{10, 200, 30, 60}, Rect{40, 260, -30, -60}}) {
    SCOPED_TRACE(rect.size.width);
    const Rows<Axis, double, double, double, double> cases{
        {kX, 10, 25, 40, 30}, {kY, 200, 230, 260, 60}, {kOther, 200, 230, 260, 60}};
    for (const auto& [axis, min, mid, max, size] : cases) {
      SCOPED_TRACE(static_cast<int>(axis));
      EXPECT_EQ(TQRectMinForAxis(axis, rect), min);
      EXPECT_EQ(TQRectMidForAxis(axis, rect), mid);
      EXPECT_EQ(TQRectMaxForAxis(axis, rect), max);
      EXPECT_EQ(TQRectSizeForAxis(axis, rect), size);
      EXPECT_EQ(TQRectRangeForAxis(axis, rect).length, size);

      const Rect byMin = TQRectWithMinForAxis(axis, -7, rect);
      const Rect byMid = TQRectWithMidForAxis(axis, -7, rect);
      const Rect byMax = TQRectWithMaxForAxis(axis, -7, rect);
      EXPECT_EQ(TQRectMinForAxis(axis, byMin), -7);
      EXPECT_EQ(TQRectMidForAxis(axis, byMid), -7);
      EXPECT_EQ(TQRectMaxForAxis(axis, byMax), -7);
      for (const Rect& moved : {byMin, byMid, byMax}) EXPECT_EQ(moved.size, rect.size);
      const Axis across = axis == kX ? kY : kX;
      EXPECT_EQ(TQRectMinForAxis(across, byMin), TQRectMinForAxis(across, rect));
    }
  }
  EXPECT_EQ(TQRectWithSizeForAxis(kY, -3, {1, 2, 3, 4}).size, (Size{3, -3}));
}

TEST(RectAxis, ValuesInOrderReadTheRawOriginAndTheMaximum) {
  EXPECT_EQ(TQRectValueForAxisInOrder(kX, 0, {40, 260, -30, -60}), 40);
  EXPECT_EQ(TQRectValueForAxisInOrder(kY, -5, Rect(1, 2, 3, 4)), 6);
  EXPECT_EQ(TQRectAddValueForAxisInOrder(kX, 0, 5, {10, 0, 30, 1}), Rect(15, 0, 25, 1));
  EXPECT_EQ(TQRectAddValueForAxisInOrder(kY, 1, 5, {10, 0, 30, 1}), Rect(10, 0, 30, 6));
}

TEST(RectAxis, ValueForKeyKnowsSixNames) {
  const Rect rect{40, 260, -30, -60};
  const Rows<const char*, double> cases{{"minX", 10},  {"midX", 25},  {"maxX", 40}, {"minY", 200},
                                        {"midY", 230}, {"maxY", 260}, {"MinX", 0},  {"", 0}};
  for (const auto& [key, value] : cases) EXPECT_EQ(TQRectValueForKey(rect, key), value) << key;
}

TEST(RectAxis, OverlapAbuttingAndContainmentOnOneAxis) {
  const Rows<const char*, double, double, double, double, bool, bool, bool> cases{
      {"inside", 0, 10, 2, 3, true, true, true},
      {"around", 2, 3, 0, 10, true, true, false},
      {"touching", 0, 10, 10, 5, false, true, false},
      {"in common less than one", 0, 10, 9.5, 5, true, true, false},
      {"apart", 0, 10, 11, 5, false, false, false},
      {"no length inside", 0, 10, 4, 0, false, false, true},
      {"both without length at one place", 4, 0, 4, 0, false, true, true},
      {"negative length counts as written", 10, -10, 2, 3, false, false, true},
      {"NaN origin leaves the second length", 0, 10, kNaN, 3, true, true, false},
  };
  for (const auto& [name, aOrigin, aLength, bOrigin, bLength, intersects, abutsOrIntersects,
                    contains] : cases) {
    SCOPED_TRACE(name);
    const Rect xa{aOrigin, 100, aLength, 1}, xb{bOrigin, -100, bLength, 1};
    const Rect ya{100, aOrigin, 1, aLength}, yb{-100, bOrigin, 1, bLength};
    EXPECT_EQ(TQRectIntersectsRectOnAxis(kX, xa, xb), intersects);
    EXPECT_EQ(TQRectIntersectsRectOnAxis(kOther, ya, yb), intersects);
    EXPECT_EQ(TQRectIntersectsOrAbutsRectOnAxis(kX, xa, xb), abutsOrIntersects);
    EXPECT_EQ(TQRectContainsRectOnAxis(kX, xa, xb), contains);
    EXPECT_FALSE(TQRectContainsRectOnAxis(kOther, ya, yb));
  }
}

TEST(RectCorners, PointsEdgesAndResizing) {
  const Rect rect{10, 20, 30, 40};
  const Rows<int, Point, Rect> cases{
      {0, {10, 20}, {15, 50, 25, 10}}, {1, {40, 20}, {10, 50, 5, 10}},
      {2, {10, 60}, {15, 20, 25, 30}}, {3, {40, 60}, {10, 20, 5, 30}},
      {4, {25, 20}, {10, 50, 30, 10}}, {5, {10, 40}, {15, 20, 25, 40}},
      {6, {40, 40}, {10, 20, 5, 40}},  {7, {25, 60}, {10, 20, 30, 30}},
      {8, {25, 40}, {10, 20, 30, 40}}, {9, {0, 0}, {10, 20, 30, 40}},
      {-1, {0, 0}, {10, 20, 30, 40}},
  };
  for (const auto& [number, at, resized] : cases) {
    SCOPED_TRACE(number);
    const auto corner = static_cast<TQCorner>(number);
    EXPECT_EQ(TQRectPointForCorner(rect, corner), at);
    EXPECT_EQ(TQRectPointForCorner({40, 60, -30, -40}, corner), at);
    expectFields(TQRectResizeByPuttingCorner({15, 50}, rect, corner), resized);
  }
  for (int edge = 0; const Point mid : {Point{10, 40}, {25, 20}, {40, 40}, {25, 60}, {0, 0}}) {
    EXPECT_EQ(TQRectGetMidOfEdge({40, 60, -30, -40}, static_cast<Edge>(edge++)), mid) << edge;
  }
  // Past the opposite side the extent is negative. Raw and standardised fields are used as
  // documented.
  expectFields(TQRectResizeByPuttingCorner({50, 0}, rect, TQCorner::minXMinY), {50, 0, -10, 60});
  expectFields(TQRectResizeByPuttingCorner({50, 0}, {40, 0, -30, 10}, TQCorner::maxXMidY),
               {40, 0, 10, 10});
}

TEST(RectCorners, TheFirstWithinReachWinsNotTheNearest) {
  const Rows<const char*, Point, double, TQCornerMask, int> cases{
      {"first though farther", {9, 0}, 20, TQCornerMaskOutline, 0},
      {"reach is exclusive", {3, 4}, 5, 1, -1},
      {"the centre is never tried", {5, 5}, 1, 256 | TQCornerMaskOutline, -1},
      {"the last on the outline", {5, 10}, 1, TQCornerMaskOutline, 7},
      {"NaN", {kNaN, 0}, 100, TQCornerMaskOutline, -1},
      {"squares would overflow", {1e200, 0}, 1e201, TQCornerMaskOutline, 0},
  };
  for (const auto& [name, point, reach, mask, expected] : cases) {
    const TQCorner corner = TQRectClosestCornerForPoint(point, reach, mask, {0, 0, 10, 10});
    EXPECT_EQ(static_cast<int>(corner), expected) << name;
  }
}

TEST(RectCorners, APlacedRectHasItsCornerThere) {
  for (const Size size : {Size{4, 6}, {-4, 6}, {-4, -6}, {0, 0}}) {
    for (int i = 0; i <= 8; ++i) {
      const Rect rect = TQRectWithCornerAtPoint(size, {100, 50}, static_cast<TQCorner>(i));
      EXPECT_EQ(TQRectPointForCorner(rect, static_cast<TQCorner>(i)), (Point{100, 50})) << i;
      EXPECT_EQ(rect.size, (Size{std::fabs(size.width), std::fabs(size.height)}));
    }
  }
  expectFields(TQRectWithCornerAtPoint({4, 6}, {1, 2}, static_cast<TQCorner>(9)), RectNull);
  expectFields(TQRectWithCornerAtPoint({2, 3}, {kInf, 0}, TQCorner::minXMinY), RectNull);
}

}  // namespace
}  // namespace tq
