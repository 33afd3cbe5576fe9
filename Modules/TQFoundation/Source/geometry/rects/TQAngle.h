#pragma once

/// @file TQAngle.h
/// Angles in radians, from the x axis towards the y axis.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Direction from `a` to `b`: atan2 of the differences, so 0 for equal points and ±π towards -x,
/// by the sign of the zero of y.
[[nodiscard]] TQ_EXPORT double TQSlopeBetweenPoints(Point a, Point b) noexcept;

/// Subtracts 2π while the angle is above π, then adds 2π while it is below -π: in [-π, π].
///
/// The rounding is that of the repeated steps up to TQNormalizeRadiansStepLimit turns; an angle
/// further out, which holds hardly a direction any more, is taken to its remainder at once.
/// NaN and infinities give NaN.
[[nodiscard]] TQ_EXPORT double TQNormalizeRadians(double angleRadians) noexcept;

/// Turns that TQNormalizeRadians takes one by one.
inline constexpr double TQNormalizeRadiansStepLimit = 1 << 24;

/// radians × 180 / π
[[nodiscard]] TQ_EXPORT double TQRadiansToDegrees(double angleRadians) noexcept;

/// degrees × π / 180
[[nodiscard]] TQ_EXPORT double TQDegreesToRadians(double angleDegrees) noexcept;

/// The nearest multiple of π/4 within ±π. Half way between two, at odd multiples of π/8, the one
/// further from zero is taken.
///
/// 0 and angles down to -π/8 give -0.0, smaller angles above 0 give +0.0: which side the angle came
/// from stays visible. From 9π/8 on either side, and for NaN, the angle is answered as it is.
[[nodiscard]] TQ_EXPORT double TQSlopeToStraightAngles(double angleRadians) noexcept;

}  // namespace tq
