#include <TQFoundation/geometry/rects/TQSize.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(Size, MagnitudeNormalAndContainment) {
  EXPECT_EQ(TQSizeNormalise({-3, 4}), (Size{-3.0 / 5, 4.0 / 5}));
  EXPECT_EQ(TQSizeNormalise({0, 1e-10}), (Size{0, 1e-10}));
  EXPECT_EQ(TQSizeNormalise({0, 1e-09}), (Size{0, 1}));
  EXPECT_TRUE(TQSizeContainsSize({2, 3}, {2, 3}));
  EXPECT_FALSE(TQSizeContainsSize({2, 3}, {1, 4}));
  EXPECT_FALSE(TQSizeContainsSize({2, kNaN}, {1, 1}));
}

}  // namespace
}  // namespace tq
