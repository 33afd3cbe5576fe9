#pragma once

/// @file TQAngle.h
/// Angles in radians, from the x axis towards the y axis.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns the direction from `a` to `b`: atan2 of the differences. It is 0 for equal points.
/// Towards -x it is π or -π, by the sign of the zero of the y difference.
[[nodiscard]] TQ_EXPORT double TQSlopeBetweenPoints(Point a, Point b) noexcept;

/// Returns the angle normalised to [-π, π]: subtracts 2π while it is above π, then adds 2π while it
/// is below -π.
///
/// Up to TQNormalizeRadiansStepLimit turns the result is rounded as by the repeated steps. A larger
/// angle, which has almost no direction left, is reduced by one remainder operation. NaN and
/// infinities return NaN.
[[nodiscard]] TQ_EXPORT double TQNormalizeRadians(double angleRadians) noexcept;

/// The number of turns that TQNormalizeRadians subtracts one by one.
inline constexpr double TQNormalizeRadiansStepLimit = 1 << 24;

/// Returns radians × 180 / π.
[[nodiscard]] TQ_EXPORT double TQRadiansToDegrees(double angleRadians) noexcept;

/// Returns degrees × π / 180.
[[nodiscard]] TQ_EXPORT double TQDegreesToRadians(double angleDegrees) noexcept;

/// Returns the nearest multiple of π/4 in [-π, π]. An odd multiple of π/8 is half way between two
/// of them and is rounded to the one further from zero.
///
/// 0 and angles between -π/8 and 0 return -0.0; angles above 0 that are nearest to 0 return +0.0.
/// So the sign of the zero shows from which side the angle came. Angles of 9π/8 or more in
/// magnitude, and NaN, are returned unchanged.
[[nodiscard]] TQ_EXPORT double TQSlopeToStraightAngles(double angleRadians) noexcept;

}  // namespace tq
