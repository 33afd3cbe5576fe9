#pragma once

/// @file TQRectRounding.h
/// Rounds numbers, points, sizes and rects to whole numbers or to a step. Ties round away from
/// zero.

#include <cmath>
#include <concepts>
#include <limits>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Returns the nearest whole number; ties round away from zero. Computes trunc(x + copysign(h, x))
/// with the largest h below one half, so that the largest number below one half becomes 0. Small
/// negative numbers become -0. Infinities and NaN are returned unchanged. From 2^52 on (for
/// doubles) x is a whole number and is returned unchanged.
template <std::floating_point Value>
[[nodiscard]] inline Value TQFloatRoundHalfAwayFromZero(Value x) noexcept {
  constexpr Value kBelowHalf = (1 - std::numeric_limits<Value>::epsilon() / 2) / 2;
  return std::trunc(x + std::copysign(kBelowHalf, x));
}

/// Returns the multiple of `step` nearest to `value`: rounded(value / step) × step. A step that is
/// 0, infinite or NaN returns NaN.
[[nodiscard]] inline double TQFloatRoundToStep(double value, double step) noexcept {
  return TQFloatRoundHalfAwayFromZero(value / step) * step;
}

/// Applies TQFloatRoundHalfAwayFromZero() to both components.
[[nodiscard]] inline Point TQPointByRoundingPoint(Point point) noexcept {
  return {TQFloatRoundHalfAwayFromZero(point.x), TQFloatRoundHalfAwayFromZero(point.y)};
}

/// Applies TQFloatRoundHalfAwayFromZero() to both extents.
[[nodiscard]] inline Size TQSizeByRoundingSize(Size size) noexcept {
  return {TQFloatRoundHalfAwayFromZero(size.width), TQFloatRoundHalfAwayFromZero(size.height)};
}

/// Rounds each raw field by itself. The maximum of the result may therefore differ from the rounded
/// maximum of `rect`.
[[nodiscard]] inline Rect TQRectByRoundingRect(const Rect& rect) noexcept {
  return {TQPointByRoundingPoint(rect.origin), TQSizeByRoundingSize(rect.size)};
}

/// Rounds each raw field to a multiple of `step`. It multiplies by 1 / step where
/// TQFloatRoundToStep() divides, so the two may differ by one step near a tie. A step of 0 returns
/// NaN.
[[nodiscard]] TQ_EXPORT Rect TQRectByRoundingRectToStep(const Rect& rect, double step) noexcept;

}  // namespace tq
