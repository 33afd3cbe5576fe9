#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>
#include <TQFoundation/geometry/rects/TQRect.h>

#include "support/CapturedLog.h"

namespace {

TEST(RectObject, SettersMoveWithoutResizing) {
  const Ref<TQRect> rect = TQRect::rectWithRect({1, 2, 10, 20});
  rect->setMidX(0);
  rect->setMaxY(0);
  expectFields(rect->rect(), {-5, -20, 10, 20});
  rect->setMid({100, 100});
  expectFields(rect->rect(), {95, 90, 10, 20});
  rect->setMaxX(7);
  rect->setMinY(4);
  expectFields(rect->rect(), {-3, 4, 10, 20});
  rect->setWidth(-10);
  EXPECT_EQ(rect->minX(), -13);
}

TEST(RectObject, EqualsByStandardisedRectAndCopiesApart) {
  const Ref<TQRect> rect = TQRect::initWithRect({0, -0.0, 5, 5});
  const Ref<TQRect> same = TQRect::initWithRect({5, 5, -5, -5});
  EXPECT_TRUE(rect->isEqual(*same));
  EXPECT_EQ(rect->hash(), same->hash());
  const Ref<Object> copy = rect->copy();
  EXPECT_TRUE(rect->isEqual(*copy));
  rect->setX(1);
  EXPECT_FALSE(rect->isEqual(*copy));
  rect->setX(kNaN);
  EXPECT_TRUE(rect->isEqual(*rect));
}

TEST(RectObject, TextHasSixDecimalsWhateverTheNumber) {
  EXPECT_EQ(TQRect::rectWithRect({1.5, -0.0, 1e-9, 123456789.0000005})->description(),
            "x:1.500000 y:-0.000000 w:0.000000 h:123456789.000001");
  const test::CapturedLog log;
  TQLogRect({1, 2, -kNaN, kInf});
  TQLogSize({0.1, -2});
  TQLogPoint({-kMax, 0});
  const auto lines = log.messages();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], "x:1.000000 y:2.000000 w:nan h:inf");
  EXPECT_EQ(lines[1], "w:0.100000 h:-2.000000");
  EXPECT_EQ(lines[2].size(), 2 + 1 + 309 + 7 + 1 + 10U);  // all 309 digits of the largest double
}

// A unit in the last place of 1.
constexpr double kUlp = std::numeric_limits<double>::epsilon();

// Returns the rect with one component `value`; the others are 1.
Rect with(int component, double value) {
  const auto at = [=](int i) { return i == component ? value : 1; };
  return {at(0), at(1), at(2), at(3)};
}

TEST(RectEquality, TolerancesAreInclusiveExclusiveOrInLastPlaces) {
  const Rows<const char*, double, double, bool, bool, bool> cases{
      {"255 steps", 1, 1 + 255 * kUlp, true, true, true},
      {"256 steps", 1, 1 + 256 * kUlp, true, false, true},
      {"255 steps below zero", -1 - 255 * kUlp, -1, true, true, true},
      {"zeros of both signs", 0.0, -0.0, true, true, true},
      {"denormals of both signs", kTiny, -kTiny, true, false, true},
      {"just the accuracy", 0.25, 0, true, false, false},
      {"beyond it", 0.26, 0, false, false, false},
      {"NaN never makes unequal, but for a thousandth", kNaN, 1, true, true, false},
      {"largest and infinite are neighbours", kMax, kInf, false, true, false},
      {"infinities of both signs", kInf, -kInf, false, false, false},
  };
  for (const auto& [name, a, b, within, approximately, fuzzily] : cases) {
    SCOPED_TRACE(name);
    for (int i = 0; i < 4; ++i) {
      const Rect one = with(i, a), other = with(i, b);
      EXPECT_EQ(TQRectEqualToRectWithAccuracy(one, other, 0.25), within);
      EXPECT_EQ(TQRectApproximatelyEqual(one, other), approximately);
      EXPECT_EQ(TQRectApproximatelyEqual(other, one), approximately);
      EXPECT_EQ(TQRectFuzzyEqualToRect(one, other), fuzzily);
    }
    EXPECT_EQ(TQPointEqualToPointWithAccuracy({0, a}, {0, b}, 0.25), within);
    EXPECT_EQ(TQSizeEqualToSizeWithAccuracy({a, 0}, {b, 0}, 0.25), within);
    EXPECT_EQ(TQPointApproximatelyEqual({a, 0}, {b, 0}), approximately);
    EXPECT_EQ(TQSizeApproximatelyEqual({0, a}, {0, b}), approximately);
  }
  EXPECT_FALSE(TQRectFuzzyEqualToRect({0, 0, 5, 5}, {5, 5, -5, -5}));  // raw fields
}

int compare(const Rect& a, const Rect& b) { return TQRectFuzzyCompareWithOptions(0, a, b); }

TEST(RectOrder, ComparesRawOriginsOnAnAxis) {
  const Rect a{5, 1, -4, 0}, b{3, 1, 0, 9};
  EXPECT_EQ(TQRectCompare(Axis::horizontal, a, b), 1);
  EXPECT_EQ(TQRectCompare(Axis::vertical, a, b), 0);
  EXPECT_EQ(TQRectCompare(static_cast<Axis>(5), a, {0, 2, 0, 0}), -1);
  EXPECT_EQ(TQRectCompare(Axis::horizontal, a, {kNaN, 0, 0, 0}), 0);
}

TEST(RectOrder, ReadingOrderStepByStep) {
  const Rows<const char*, Rect, Rect, int, int> cases{
      {"a fifth of the height is no common row", {50, 0, 10, 10}, {0, 8, 10, 10}, -1, 1},
      {"a quarter is one", {50, 0, 10, 8}, {0, 6, 10, 8}, 1, -1},
      {"one row, side by side", {0, 1, 10, 10}, {20, 0, 10, 10}, -1, 1},
      {"over half the height: x first", {0, 4, 10, 10}, {1, 0, 10, 10}, -1, 1},
      {"then the maximum of x", {0, 4, 9, 10}, {0, 0, 10, 10}, -1, 1},
      {"then y", {0, 4, 10, 10}, {0, 0, 10, 10}, 1, -1},
      {"little height in common, much width: y first", {1, 0, 10, 10}, {0, 7, 10, 10}, -1, 1},
      {"little of both: x first", {0, 7, 10, 10}, {8, 0, 10, 10}, -1, 1},
      {"identical, no height", {0, 0, 5, 0}, {0, 0, 5, 0}, -1, -1},
      {"identical, no width", {0, 0, 0, 5}, {0, 0, 0, 5}, 1, 1},
      {"identical, an epsilon high", {0, 0, 5, kUlp}, {0, 0, 5, kUlp}, -1, -1},
      {"identical, an epsilon wide", {0, 0, kUlp, 5}, {0, 0, kUlp, 5}, 1, 1},
      {"identical, two epsilons", {0, 0, 2 * kUlp, 2 * kUlp}, {0, 0, 2 * kUlp, 2 * kUlp}, 0, 0},
      {"negative extents", {15, 10, -10, -10}, {20, 0, 10, 10}, -1, 1},
      {"NaN", {kNaN, 0, 1, 1}, {0, 0, 1, 1}, 0, 0},
  };
  for (const auto& [name, a, b, ab, ba] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(compare(a, b), ab);
    EXPECT_EQ(compare(b, a), ba);
    EXPECT_EQ(TQRectFuzzyCompareWithOptions(~0U, a, b), ab);
  }
}

// Compares the cells of a grid in each of the eight reading orders.
TEST(RectOrder, OptionsReadAGridFromEachCornerByRowsOrColumns) {
  for (unsigned option = 0; option < 8; ++option) {
    SCOPED_TRACE(option);
    for (int i = 0; i < 16; ++i) {
      for (int j = 0; j < 16; ++j) {
        if (i == j) continue;
        const Rect a{i % 4 * 10.0, i / 4 * 10.0, 8, 8}, b{j % 4 * 10.0, j / 4 * 10.0, 8, 8};
        const int columns = (i % 4 - j % 4) * ((option & 1) != 0 ? -1 : 1);
        const int rows = (i / 4 - j / 4) * ((option & 4) != 0 ? -1 : 1);
        const bool byColumns = (option & 2) != 0 ? columns != 0 : rows == 0;
        EXPECT_EQ(TQRectFuzzyCompareWithOptions(option, a, b),
                  (byColumns ? columns : rows) < 0 ? -1 : 1)
            << i << ", " << j;
      }
    }
  }
}

}  // namespace
