#include <TQFoundation/geometry/rects/TQRect.h>

#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>

#include "geometry/Expectations.h"
#include "support/CapturedLog.h"

namespace tq {
namespace {

using namespace test;

TEST(RectObject, SettersMoveWithoutResizing) {
  const Ref<TQRect> rect = TQRect::rectWithRect({1, 2, 10, 20});
  rect->setMidX(0);
  expectFields(rect->rect(), {-5, 2, 10, 20});
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
  rect->setX(std::numeric_limits<double>::quiet_NaN());
  EXPECT_TRUE(rect->isEqual(*rect));
}

TEST(RectObject, TextHasSixDecimalsWhateverTheNumber) {
  EXPECT_EQ(TQRect::rectWithRect({1.5, -0.0, 1e-9, 123456789.0000005})->description(),
            "x:1.500000 y:-0.000000 w:0.000000 h:123456789.000001");
  const test::CapturedLog log;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  TQLogRect({1, 2, -nan, std::numeric_limits<double>::infinity()});
  TQLogSize({0.1, -2});
  TQLogPoint({-std::numeric_limits<double>::max(), 0});
  const auto lines = log.messages();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], "x:1.000000 y:2.000000 w:nan h:inf");
  EXPECT_EQ(lines[1], "w:0.100000 h:-2.000000");
  EXPECT_EQ(lines[2].size(), 2 + 1 + 309 + 7 + 1 + 10U);  // all 309 digits of the largest double
}

}  // namespace
}  // namespace tq
