#pragma once

/// @file TQRectSafe.h
/// Rects made fit for layout: no infinities, no NaN, no vanishing extents.

#include <cmath>

#include <TQFoundation/base/Rect.h>

namespace tq {

/// What stands in for a bad coordinate, and the least extent of a safe rect.
inline constexpr double TQFloatSafeValue = 0.1;

/// `value`, or 0.1 when it is infinite or NaN.
[[nodiscard]] inline double TQFloatMakeNotInfOrNan(double value) noexcept {
  return std::isfinite(value) ? value : TQFloatSafeValue;
}

/// `value` made finite as above, then pushed away from zero to a magnitude of at least `minimum`.
/// Its sign stays; both zeros become +minimum, where that is above 0. A minimum of NaN pushes
/// nothing.
[[nodiscard]] inline double TQFloatMakeAbsGreaterThanOrEqual(double value,
                                                             double minimum) noexcept {
  const double finite = TQFloatMakeNotInfOrNan(value);
  if (finite < 0) return -minimum < finite ? -minimum : finite;
  return finite < minimum ? minimum : finite;
}

/// TQFloatMakeNotInfOrNan() of each coordinate.
[[nodiscard]] inline Point TQPointSafe(Point point) noexcept {
  return {TQFloatMakeNotInfOrNan(point.x), TQFloatMakeNotInfOrNan(point.y)};
}

/// Finite raw fields, and extents of at least 0.1 in magnitude whose signs stay. The null rect
/// becomes (0.1, 0.1, 0.1, 0.1).
[[nodiscard]] inline Rect TQRectSafe(const Rect& rect) noexcept {
  return {TQPointSafe(rect.origin),
          {TQFloatMakeAbsGreaterThanOrEqual(rect.size.width, TQFloatSafeValue),
           TQFloatMakeAbsGreaterThanOrEqual(rect.size.height, TQFloatSafeValue)}};
}

/// Bounds of both rects, from the least minimum to the greatest maximum on each axis. Unlike
/// RectUnion() it makes no exception for null rects: they reach to infinity. Where a bound of `a`
/// is NaN, that of `b` is taken.
[[nodiscard]] constexpr Rect TQUnionRectSafe(const Rect& a, const Rect& b) noexcept {
  return detail::boundsOfBoth(a, b);
}

}  // namespace tq
