#pragma once

/// @file TQRectSafe.h
/// Makes rects safe for layout: no infinities, no NaN, no extents near 0.

#include <cmath>

#include <TQFoundation/base/Rect.h>

namespace tq {

/// The replacement of a coordinate that is not finite, and the least magnitude of a safe rect's
/// extents.
inline constexpr double TQFloatSafeValue = 0.1;

/// Returns `value`, or 0.1 if it is infinite or NaN.
[[nodiscard]] inline double TQFloatMakeNotInfOrNan(double value) noexcept {
  return std::isfinite(value) ? value : TQFloatSafeValue;
}

/// Makes `value` finite with TQFloatMakeNotInfOrNan(), then enlarges its magnitude to at least
/// `minimum`. The sign is kept. If `minimum` is above 0, both zeros become +minimum. A minimum of
/// NaN enlarges nothing.
[[nodiscard]] inline double TQFloatMakeAbsGreaterThanOrEqual(double value,
                                                             double minimum) noexcept {
  const double finite = TQFloatMakeNotInfOrNan(value);
  if (finite < 0) return -minimum < finite ? -minimum : finite;
  return finite < minimum ? minimum : finite;
}

/// Applies TQFloatMakeNotInfOrNan() to both coordinates.
[[nodiscard]] inline Point TQPointSafe(Point point) noexcept {
  return {TQFloatMakeNotInfOrNan(point.x), TQFloatMakeNotInfOrNan(point.y)};
}

/// Returns the rect with finite raw fields and extents of at least 0.1 in magnitude. The signs of
/// the extents are kept. The null rect becomes (0.1, 0.1, 0.1, 0.1).
[[nodiscard]] inline Rect TQRectSafe(const Rect& rect) noexcept {
  return {TQPointSafe(rect.origin),
          {TQFloatMakeAbsGreaterThanOrEqual(rect.size.width, TQFloatSafeValue),
           TQFloatMakeAbsGreaterThanOrEqual(rect.size.height, TQFloatSafeValue)}};
}

/// Returns the bounds of both rects: on each axis from the smaller minimum to the greater maximum.
/// RectUnion() ignores null rects; this function does not, so they extend the result to infinity.
/// Where a bound of `a` is NaN, the bound of `b` is used.
[[nodiscard]] constexpr Rect TQUnionRectSafe(const Rect& a, const Rect& b) noexcept {
  return detail::boundsOfBoth(a, b);
}

}  // namespace tq
