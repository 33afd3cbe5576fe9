#include <TQFoundation/geometry/rects/TQRectConstruction.h>

#include <utility>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(RectConstruction, FromPointsSizesAndMargins) {
  for (const auto& [a, b] : {std::pair<Point, Point>{{1, 9}, {4, 2}},
                             {{4, 2}, {1, 9}},
                             {{1, 2}, {4, 9}},
                             {{4, 9}, {1, 2}}}) {
    expectFields(TQRectFromPoints(a, b), {1, 2, 3, 7});
  }
  expectFields(TQRectWithSizeCenteredAtPoint({4, -6}, {10, 20}), {8, 23, 4, -6});
  expectFields(TQRectWithSizeCenteredInRect({4, 6}, {20, 20, -10, 10}), {13, 22, 4, 6});
  expectFields(TQRectWithMarginAroundPoint(3, {1, 2}), {-2, -1, 6, 6});
  expectFields(TQRectPointUnion({5, -1}, {0, 0, 2, 2}), {0, -1, 5, 3});
  expectFields(TQRectPointUnion({5, -1}, RectNull), {5, -1, 0, 0});
}

TEST(RectConstruction, MinSizeGrowsRawExtentsAroundTheMiddle) {
  expectFields(TQRectWithMinSize({10, 2}, {0, 0, 4, 4}), {-3, 0, 10, 4});
  expectFields(TQRectWithMinSize({2, 2}, {0, 0, -4, 2}), {-3, 0, 2, 2});  // -4 is below 2
}

TEST(RectConstruction, FlippingChangesSignsNotTheArea) {
  const Rect rect{1, 2, 3, 4};
  expectFields(TQRectFlip(rect, AxisMask::horizontal), {4, 2, -3, 4});
  expectFields(TQRectFlip(rect, AxisMask::both), {4, 6, -3, -4});
  expectFields(TQRectFlip(rect, static_cast<AxisMask>(4)), rect);
}

TEST(RectConstruction, MidsMoveAndEdgesResize) {
  const Rect rect{10, 20, 4, 6};
  expectFields(TQRectWithMidX(0, {10, 20, -4, 6}), {2, 20, -4, 6});
  expectFields(TQRectWithMidY(0, rect), {10, -3, 4, 6});
  expectFields(TQRectResizeMinXTo(11, rect), {11, 20, 3, 6});
  expectFields(TQRectResizeMinYTo(30, rect), {10, 30, 4, -4});
  expectFields(TQRectResizeMaxYTo(21, rect), {10, 20, 4, 1});
  expectFields(TQRectResizeMaxXTo(16, {14, 26, -4, -6}), {10, 26, 6, -6});
}

}  // namespace
}  // namespace tq
