#include <TQFoundation/geometry/rects/TQAngle.h>

#include "geometry/Expectations.h"

namespace tq {
namespace {

using namespace test;

constexpr double kEighth = 0.39269908169872414;  // π/8, as the function has it

TEST(Angle, SnapsToStraightAnglesKeepingTheSignOfZero) {
  const double below = std::nextafter(kEighth, 0);
  const struct {
    const char* name;
    double angle, snapped;
  } cases[] = {
      {"zero is negative", 0.0, -0.0},
      {"just above zero", 1e-300, 0.0},
      {"just below the first threshold", below, 0.0},
      {"on it", kEighth, kPi / 4},
      {"on minus the first", -kEighth, -kPi / 4},
      {"second", 1.1780972450961724, kPi / 2},
      {"third", 1.9634954084936207, 3 * kPi / 4},
      {"fourth", 2.748893571891069, kPi},
      {"fifth stays", 3.5342917352885173, 3.5342917352885173},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const double snapped = TQSlopeToStraightAngles(c.angle);
    EXPECT_EQ(snapped, c.snapped);
    EXPECT_EQ(std::signbit(snapped), std::signbit(c.snapped));
  }
  EXPECT_TRUE(std::isnan(TQSlopeToStraightAngles(kNaN)));
}

TEST(Angle, NormalisesByRepeatedTurnsAndFarOutAtOnce) {
  EXPECT_EQ(TQNormalizeRadians(-kPi), -kPi);
  double stepped = 1000.25;  // twenty turns of rounding differ from one remainder
  while (stepped > kPi) stepped -= 2 * kPi;
  EXPECT_EQ(TQNormalizeRadians(-1000.25), -stepped);
  EXPECT_EQ(TQNormalizeRadians(-1e16), std::remainder(-1e16, 2 * kPi));
  EXPECT_TRUE(std::isnan(TQNormalizeRadians(kNaN)));
  EXPECT_TRUE(std::isnan(TQNormalizeRadians(-kInf)));
}

TEST(Angle, SlopeAndDegrees) {
  EXPECT_EQ(TQSlopeBetweenPoints({5, 5}, {5, 5}), 0);
  EXPECT_EQ(TQSlopeBetweenPoints({0, 0.0}, {-1, -0.0}), -kPi);  // the zero's sign decides
  EXPECT_EQ(TQRadiansToDegrees(kPi), 180);
  EXPECT_EQ(TQDegreesToRadians(90), kPi / 2);
}

}  // namespace
}  // namespace tq
