#include <TQFoundation/geometry/rects/TQRectAxis.h>

#include <climits>
#include <string>

#include <TQFoundation/geometry/rects/TQAxis.h>
#include <TQFoundation/geometry/rects/TQCorner.h>

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
    const struct {
      Axis axis;
      double min, mid, max, size;
    } cases[] = {{kX, 10, 25, 40, 30}, {kY, 200, 230, 260, 60}, {kOther, 200, 230, 260, 60}};
    for (const auto& c : cases) {
      SCOPED_TRACE(static_cast<int>(c.axis));
      EXPECT_EQ(TQRectMinForAxis(c.axis, rect), c.min);
      EXPECT_EQ(TQRectMidForAxis(c.axis, rect), c.mid);
      EXPECT_EQ(TQRectMaxForAxis(c.axis, rect), c.max);
      EXPECT_EQ(TQRectSizeForAxis(c.axis, rect), c.size);
      EXPECT_EQ(TQRectRangeForAxis(c.axis, rect).length, c.size);

      const Rect byMin = TQRectWithMinForAxis(c.axis, -7, rect);
      const Rect byMid = TQRectWithMidForAxis(c.axis, -7, rect);
      const Rect byMax = TQRectWithMaxForAxis(c.axis, -7, rect);
      EXPECT_EQ(TQRectMinForAxis(c.axis, byMin), -7);
      EXPECT_EQ(TQRectMidForAxis(c.axis, byMid), -7);
      EXPECT_EQ(TQRectMaxForAxis(c.axis, byMax), -7);
      for (const Rect& moved : {byMin, byMid, byMax}) EXPECT_EQ(moved.size, rect.size);
      const Axis across = c.axis == kX ? kY : kX;
      EXPECT_EQ(TQRectMinForAxis(across, byMin), TQRectMinForAxis(across, rect));
    }
  }
  EXPECT_EQ(TQRectWithSizeForAxis(kY, -3, {1, 2, 3, 4}).size, (Size{3, -3}));
}

TEST(RectAxis, ValuesInOrderReadTheRawOriginAndTheMaximum) {
  const Rect negative{40, 260, -30, -60};
  EXPECT_EQ(TQRectValueForAxisInOrder(kX, 0, negative), 40);
  EXPECT_EQ(TQRectValueForAxisInOrder(kY, -5, Rect(1, 2, 3, 4)), 6);
  EXPECT_EQ(TQRectAddValueForAxisInOrder(kX, 0, 5, {10, 0, 30, 1}), Rect(15, 0, 25, 1));
  EXPECT_EQ(TQRectAddValueForAxisInOrder(kY, 1, 5, {10, 0, 30, 1}), Rect(10, 0, 30, 6));
}

TEST(RectAxis, ValueForKeyKnowsSixNames) {
  const Rect rect{40, 260, -30, -60};
  const struct {
    const char* key;
    double value;
  } cases[] = {{"minX", 10},  {"midX", 25},  {"maxX", 40}, {"minY", 200},
               {"midY", 230}, {"maxY", 260}, {"MinX", 0},  {"", 0}};
  for (const auto& c : cases) EXPECT_EQ(TQRectValueForKey(rect, c.key), c.value) << c.key;
}

TEST(RectAxis, OverlapAbuttingAndContainmentOnOneAxis) {
  const struct {
    const char* name;
    double aOrigin, aLength, bOrigin, bLength;
    bool intersects, abutsOrIntersects, contains;
  } cases[] = {
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
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Rect xa{c.aOrigin, 100, c.aLength, 1}, xb{c.bOrigin, -100, c.bLength, 1};
    const Rect ya{100, c.aOrigin, 1, c.aLength}, yb{-100, c.bOrigin, 1, c.bLength};
    EXPECT_EQ(TQRectIntersectsRectOnAxis(kX, xa, xb), c.intersects);
    EXPECT_EQ(TQRectIntersectsRectOnAxis(kOther, ya, yb), c.intersects);
    EXPECT_EQ(TQRectIntersectsOrAbutsRectOnAxis(kX, xa, xb), c.abutsOrIntersects);
    EXPECT_EQ(TQRectContainsRectOnAxis(kX, xa, xb), c.contains);
    EXPECT_FALSE(TQRectContainsRectOnAxis(kOther, ya, yb));
  }
}

}  // namespace
}  // namespace tq
