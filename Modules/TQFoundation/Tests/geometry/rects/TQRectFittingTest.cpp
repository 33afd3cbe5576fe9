#include <TQFoundation/geometry/rects/TQRectFitting.h>

#include <TQFoundation/geometry/values/AspectRatio.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(RectFitting, FitsAndFillsWithTheDocumentedZeroCases) {
  const Rect square{0, 0, 200, 200}, offset{10, 20, 40, 60};
  const struct {
    const char* name;
    Size size;
    Rect rect, fitted, filled;
  } cases[] = {
      {"wide", {100, 50}, square, {0, 50, 200, 100}, {-100, 0, 400, 200}},
      {"off the origin", {2, 1}, offset, {10, 40, 40, 20}, {-30, 20, 120, 60}},
      {"high", {50, 100}, square, {50, 0, 100, 200}, {0, -100, 200, 400}},
      {"no width", {0, 5}, offset, {30, 20, 0, 60}, {kNaN, -kInf, kNaN, kInf}},
      {"no size", {0, 0}, offset, {30, 20, 0, 60}, {kNaN, -kInf, kNaN, kInf}},
      {"rect without width", {5, 5}, {10, 20, 0, 60}, {10, 50, 0, 0}, {kNaN, kNaN, kNaN, kNaN}},
      {"rect without either", {5, 5}, {10, 20, 0, 0}, {10, 20, 0, 0}, {10, 20, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    expectFields(TQRectWithSizeProportionallyInRect(c.size, c.rect), c.fitted);
    expectFields(TQRectWithSizeProportionallyAroundRect(c.size, c.rect), c.filled);
    if (!AspectRatio::ofSize(c.size).isValid()) continue;
    expectFields(AspectRatio::ofSize(c.size).fitted(c.rect), c.fitted);
    expectFields(AspectRatio::ofSize(c.size).filled(c.rect), c.filled);
  }
}

TEST(RectFitting, ProportionsFollowOneExtent) {
  const Rect rect{1, 2, 40, 10};
  expectFields(TQRectWithWidthRespectingProportions(20, rect), {1, 2, 20, 5});
  expectFields(TQRectWithHeightRespectingProportions(20, rect), {1, 2, 80, 20});
  expectFields(TQRectWithWidthRespectingProportions(20, {1, 2, 0, 10}), {1, 2, 20, 10});
  expectFields(TQRectWithSizeOnAxisAspectRatio(Axis::horizontal, 30, 1.5, rect), {1, 2, 30, 20});
  expectFields(TQRectWithSizeOnAxisAspectRatio(Axis::vertical, 30, 1.5, rect), {1, 2, 45, 30});
}

TEST(RectFitting, ScalesAndExpands) {
  expectFields(TQRectScale({1, -2, -3, 4}, 2), {2, -4, -6, 8});
  expectFields(TQRectExpand({10, 10, -4, 6}, 1), {5, 9, 6, 8});
  expectFields(TQRectExpand({0, 0, 10, 4}, -3), {3, 2, 4, 0});  // y stops at its middle
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

}  // namespace
}  // namespace tq
