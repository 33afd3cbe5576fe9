#include <TQFoundation/geometry/rects/TQRectCorners.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

constexpr auto kUnknown = static_cast<TQCorner>(9);

TEST(RectCorners, TableOfPointsAndResizing) {
  const Rect rect{10, 20, 30, 40};
  const Point to{15, 50};
  const struct {
    int corner;
    Point at;
    Rect resized;
  } cases[] = {
      {0, {10, 20}, {15, 50, 25, 10}}, {1, {40, 20}, {10, 50, 5, 10}},
      {2, {10, 60}, {15, 20, 25, 30}}, {3, {40, 60}, {10, 20, 5, 30}},
      {4, {25, 20}, {10, 50, 30, 10}}, {5, {10, 40}, {15, 20, 25, 40}},
      {6, {40, 40}, {10, 20, 5, 40}},  {7, {25, 60}, {10, 20, 30, 30}},
      {8, {25, 40}, {10, 20, 30, 40}}, {9, {0, 0}, {10, 20, 30, 40}},
      {-1, {0, 0}, {10, 20, 30, 40}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.corner);
    const auto corner = static_cast<TQCorner>(c.corner);
    EXPECT_EQ(TQRectPointForCorner(rect, corner), c.at);
    EXPECT_EQ(TQRectPointForCorner({40, 60, -30, -40}, corner), c.at);
    expectFields(TQRectResizeByPuttingCorner(to, rect, corner), c.resized);
  }
  // Past the opposite side the extent turns negative; raw and standardised reads mix as documented.
  expectFields(TQRectResizeByPuttingCorner({50, 0}, rect, TQCorner::minXMinY), {50, 0, -10, 60});
  expectFields(TQRectResizeByPuttingCorner({50, 0}, {40, 0, -30, 10}, TQCorner::maxXMidY),
               {40, 0, 10, 10});
}

TEST(RectCorners, MiddlesOfEdges) {
  const Rect rect{40, 60, -30, -40};
  EXPECT_EQ(TQRectGetMidOfEdge(rect, Edge::minX), (Point{10, 40}));
  EXPECT_EQ(TQRectGetMidOfEdge(rect, Edge::minY), (Point{25, 20}));
  EXPECT_EQ(TQRectGetMidOfEdge(rect, Edge::maxX), (Point{40, 40}));
  EXPECT_EQ(TQRectGetMidOfEdge(rect, Edge::maxY), (Point{25, 60}));
  EXPECT_EQ(TQRectGetMidOfEdge(rect, static_cast<Edge>(4)), (Point{0, 0}));
}

TEST(RectCorners, TheFirstWithinReachWinsNotTheNearest) {
  const Rect rect{0, 0, 10, 10};
  const struct {
    const char* name;
    Point point;
    double reach;
    TQCornerMask mask;
    int expected;
  } cases[] = {
      {"first though farther", {9, 0}, 20, TQCornerMaskOutline, 0},
      {"reach is exclusive", {3, 4}, 5, 1, -1},
      {"the centre is never tried", {5, 5}, 1, 256 | TQCornerMaskOutline, -1},
      {"the last on the outline", {5, 10}, 1, TQCornerMaskOutline, 7},
      {"NaN", {kNaN, 0}, 100, TQCornerMaskOutline, -1},
      {"squares would overflow", {1e200, 0}, 1e201, TQCornerMaskOutline, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const TQCorner corner = TQRectClosestCornerForPoint(c.point, c.reach, c.mask, rect);
    EXPECT_EQ(static_cast<int>(corner), c.expected);
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
  expectFields(TQRectWithCornerAtPoint({4, 6}, {1, 2}, kUnknown), RectNull);
  expectFields(TQRectWithCornerAtPoint({2, 3}, {kInf, 0}, TQCorner::minXMinY), RectNull);
}

}  // namespace
}  // namespace tq
