#pragma once

/// @file TQRectRounding.h
/// Numbers, points, sizes and rects rounded to whole numbers or to a step. Ties go away from zero.

#include <cmath>
#include <concepts>
#include <limits>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The nearest whole number, ties away from zero: trunc(x + copysign(h, x)) with the largest h
/// below one half, so that the number just below a half goes to 0. Small negatives become -0;
/// infinities and NaN stay. From 2^52 on (for doubles) x is whole and stays.
template <std::floating_point Value>
[[nodiscard]] inline Value TQFloatRoundHalfAwayFromZero(Value x) noexcept {
  constexpr Value kBelowHalf = (1 - std::numeric_limits<Value>::epsilon() / 2) / 2;
  return std::trunc(x + std::copysign(kBelowHalf, x));
}

/// The multiple of `step` next to `value`: rounded(value / step) × step. A step that is 0, infinite
/// or NaN gives NaN.
[[nodiscard]] inline double TQFloatRoundToStep(double value, double step) noexcept {
  return TQFloatRoundHalfAwayFromZero(value / step) * step;
}

/// TQFloatRoundHalfAwayFromZero() of each component.
[[nodiscard]] inline Point TQPointByRoundingPoint(Point point) noexcept {
  return {TQFloatRoundHalfAwayFromZero(point.x), TQFloatRoundHalfAwayFromZero(point.y)};
}

/// TQFloatRoundHalfAwayFromZero() of each extent.
[[nodiscard]] inline Size TQSizeByRoundingSize(Size size) noexcept {
  return {TQFloatRoundHalfAwayFromZero(size.width), TQFloatRoundHalfAwayFromZero(size.height)};
}

/// Each raw field by itself: the far edges need not come out where rounding them would.
[[nodiscard]] inline Rect TQRectByRoundingRect(const Rect& rect) noexcept {
  return {TQPointByRoundingPoint(rect.origin), TQSizeByRoundingSize(rect.size)};
}

/// Each raw field to a multiple of `step`. It multiplies by 1 / step where TQFloatRoundToStep()
/// divides, so that the two may differ by a step near a tie. A step of 0 gives NaN.
[[nodiscard]] TQ_EXPORT Rect TQRectByRoundingRectToStep(const Rect& rect, double step) noexcept;

}  // namespace tq
