#include <TQFoundation/geometry/values/AspectRatio.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

TEST(AspectRatio, ComparesProportionsAndKnowsBadOnes) {
  EXPECT_EQ((AspectRatio{4, 2}), (AspectRatio{2, 1}));
  EXPECT_NE((AspectRatio{4, 2}), (AspectRatio{4, 2}).flipped());
  EXPECT_EQ((AspectRatio{16, 9}).heightForWidth(1920), 1080);
  EXPECT_EQ((AspectRatio{16, 9}).widthForHeight(1080), 1920);
  EXPECT_TRUE(AspectRatio::ofSize({1, 1e300}).isValid());
  for (const Size bad : {Size{0, 1}, {1, -1}, {kInf, 1}, {1, kNaN}}) {
    EXPECT_FALSE(AspectRatio::ofSize(bad).isValid());
  }
}

}  // namespace
}  // namespace tq
