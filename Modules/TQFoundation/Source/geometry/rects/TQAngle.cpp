#include <TQFoundation/geometry/rects/TQAngle.h>

#include <cmath>
#include <numbers>

namespace tq {
namespace {

constexpr double kPi = std::numbers::pi;

// The odd multiples of π/8 that separate the multiples of π/4.
constexpr double kThresholds[] = {0.39269908169872414, 1.1780972450961724, 1.9634954084936207,
                                  2.748893571891069, 3.5342917352885173};
constexpr double kSnapped[] = {0, kPi / 4, kPi / 2, 3 * kPi / 4, kPi};

}  // namespace

double TQSlopeBetweenPoints(Point a, Point b) noexcept { return std::atan2(b.y - a.y, b.x - a.x); }

double TQNormalizeRadians(double angleRadians) noexcept {
  // For large angles the loop would be long, and from 2^55 on a step would not change the number.
  if (!(std::fabs(angleRadians) <= TQNormalizeRadiansStepLimit * 2 * kPi)) {
    return std::remainder(angleRadians, 2 * kPi);
  }
  while (angleRadians > kPi) angleRadians -= 2 * kPi;
  while (angleRadians < -kPi) angleRadians += 2 * kPi;
  return angleRadians;
}

double TQRadiansToDegrees(double angleRadians) noexcept { return angleRadians * 180 / kPi; }

double TQDegreesToRadians(double angleDegrees) noexcept { return angleDegrees * kPi / 180; }

double TQSlopeToStraightAngles(double angleRadians) noexcept {
  for (int i = 0; i < 5; ++i) {
    if (angleRadians > 0) {
      if (angleRadians < kThresholds[i]) return kSnapped[i];
    } else if (angleRadians > -kThresholds[i]) {
      return -kSnapped[i];
    }
  }
  return angleRadians;
}

}  // namespace tq
