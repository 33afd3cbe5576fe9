#include <TQFoundation/geometry/rects/TQRectOrder.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

int compare(const Rect& a, const Rect& b) { return TQRectFuzzyCompareWithOptions(0, a, b); }

TEST(RectOrder, ComparesRawOriginsOnAnAxis) {
  const Rect a{5, 1, -4, 0}, b{3, 1, 0, 9};
  EXPECT_EQ(TQRectCompare(Axis::horizontal, a, b), 1);
  EXPECT_EQ(TQRectCompare(Axis::vertical, a, b), 0);
  EXPECT_EQ(TQRectCompare(static_cast<Axis>(5), a, {0, 2, 0, 0}), -1);
  EXPECT_EQ(TQRectCompare(Axis::horizontal, a, {kNaN, 0, 0, 0}), 0);
}

TEST(RectOrder, ReadingOrderStepByStep) {
  const struct {
    const char* name;
    Rect a, b;
    int ab, ba;
  } cases[] = {
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
      {"negative extents", {15, 10, -10, -10}, {20, 0, 10, 10}, -1, 1},
      {"NaN", {kNaN, 0, 1, 1}, {0, 0, 1, 1}, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(compare(c.a, c.b), c.ab);
    EXPECT_EQ(compare(c.b, c.a), c.ba);
    EXPECT_EQ(TQRectFuzzyCompareWithOptions(~0U, c.a, c.b), c.ab);
  }
}

// The eight ways to read a grid of separate cells, told by row and column.
TEST(RectOrder, OptionsReadAGridFromEachCornerByRowsOrColumns) {
  const struct {
    int columnSign, rowSign;
    bool byColumns;
  } ways[] = {{1, 1, false},  {-1, 1, false},  {1, 1, true},  {-1, 1, true},
              {1, -1, false}, {-1, -1, false}, {1, -1, true}, {-1, -1, true}};
  for (unsigned option = 0; option < 8; ++option) {
    SCOPED_TRACE(option);
    const auto& way = ways[option];
    for (int i = 0; i < 16; ++i) {
      for (int j = 0; j < 16; ++j) {
        if (i == j) continue;
        const Rect a{i % 4 * 10.0, i / 4 * 10.0, 8, 8}, b{j % 4 * 10.0, j / 4 * 10.0, 8, 8};
        const int columns = (i % 4 - j % 4) * way.columnSign, rows = (i / 4 - j / 4) * way.rowSign;
        const int first = way.byColumns ? columns : rows, second = way.byColumns ? rows : columns;
        const int expected = first != 0 ? first : second;
        EXPECT_EQ(TQRectFuzzyCompareWithOptions(option, a, b), expected < 0 ? -1 : 1)
            << i << ", " << j;
      }
    }
  }
}

}  // namespace
}  // namespace tq
