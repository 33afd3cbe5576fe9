#include <TQFoundation/geometry/rects/TQRectMoving.h>

#include <TQFoundation/geometry/rects/TQRectConstruction.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(RectMoving, IntoAContainerTheMinimumSideWins) {
  const Rect container{0, 0, 100, 50};
  const struct {
    const char* name;
    Rect rect, moved;
  } cases[] = {
      {"beyond both maxima", {95, 45, 20, 20}, {80, 30, 20, 20}},
      {"before both minima", {-5, -7, 20, 20}, {0, 0, 20, 20}},
      {"wider than the container", {30, 10, 120, 20}, {0, 10, 120, 20}},
      {"negative extents count by magnitude", {120, 60, -10, -10}, {90, 40, -10, -10}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    expectFields(TQRectMoveIntoRect(c.rect, container), c.moved);
  }
  // The container's minimum is its raw origin.
  expectFields(TQRectMoveIntoRect({10, 0, 5, 5}, {40, 0, -40, 10}), {40, 0, 5, 5});
}

TEST(RectMoving, TheMiddleIsKeptInside) {
  const Rect container{100, 50, -100, -50};  // standardised: 0, 0, 100, 50
  expectFields(TQRectByEnsuringMidIsContainedInRect({-30, 60, 20, 10}, container),
               {-10, 45, 20, 10});
  expectFields(TQRectByEnsuringMidIsContainedInRect({95, -30, 20, 10}, container),
               {90, -5, 20, 10});
  const Rect negative = TQRectByEnsuringMidIsContainedInRect({-30, 0, -20, 10}, container);
  EXPECT_EQ(TQRectGetMid(negative).x, 0);
}

TEST(RectMoving, PaddingsArePositiveInside) {
  const TQEdgePaddings paddings = TQEdgePaddingsMakeWithRects({12, 5, -10, 5}, {0, 0, 20, 30});
  EXPECT_TRUE(TQEdgePaddingsEqualToEdgePaddings(paddings, {20, 2, 5, 8}));
  for (int i = 0; i < 4; ++i) {
    double fields[4] = {20, 2, 5, 8};
    fields[i] += 1;
    EXPECT_FALSE(
        TQEdgePaddingsEqualToEdgePaddings(paddings, {fields[0], fields[1], fields[2], fields[3]}));
  }
}

}  // namespace
}  // namespace tq
