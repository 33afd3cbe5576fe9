#include <TQFoundation/geometry/values/AnchoredRect.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(AnchoredRect, GrowsAwayFromItsAnchor) {
  const auto held = AnchoredRect::hold({10, 20, -10, -20}, TQCorner::maxXMaxY);
  expectFields(held.rect(), {0, 0, 10, 20});
  expectFields(held.resized({4, 4}).rect(), {6, 16, 4, 4});
  expectFields(held.moved({0, 0}).rect(), {-10, -20, 10, 20});
  const AnchoredRect centred = held.anchoredAt(TQCorner::center);
  expectFields(centred.rect(), held.rect());
  expectFields(centred.resized({2, 2}).rect(), {4, 9, 2, 2});
  EXPECT_TRUE(RectIsNull(AnchoredRect::hold({1, 1, 1, 1}, static_cast<TQCorner>(9)).rect()));
}

}  // namespace
}  // namespace tq
