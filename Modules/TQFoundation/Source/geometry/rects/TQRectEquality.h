#pragma once

/// @file TQRectEquality.h
/// Points, sizes and rects compared with a tolerance: absolute, in units in the last place, or a
/// thousandth. Raw fields throughout.

#include <bit>
#include <cmath>
#include <cstdint>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>

namespace tq {

namespace detail {

[[nodiscard]] inline bool within(double a, double b, double accuracy) noexcept {
  return !(std::fabs(a - b) > accuracy);
}

[[nodiscard]] inline bool nearlyEqual(double a, double b) noexcept {
  if (!(a < b) && !(a > b)) return true;  // equal, or unordered
  const auto one = std::bit_cast<std::uint64_t>(a);
  const auto other = std::bit_cast<std::uint64_t>(b);
  if (((one ^ other) >> 63) != 0) return false;
  // Of one sign, the patterns are as far apart as the signed integers that they spell.
  return (one > other ? one - other : other - one) <= 255;
}

[[nodiscard]] inline bool fuzzyEqual(double a, double b) noexcept {
  return std::fabs(a - b) < 0.001;
}

}  // namespace detail

/// True when no component differs by more than `accuracy`; a difference of just that passes. A
/// difference that is NaN is not more than anything, so it passes too.
[[nodiscard]] inline bool TQPointEqualToPointWithAccuracy(Point a, Point b,
                                                          double accuracy) noexcept {
  return detail::within(a.x, b.x, accuracy) && detail::within(a.y, b.y, accuracy);
}
[[nodiscard]] inline bool TQSizeEqualToSizeWithAccuracy(Size a, Size b, double accuracy) noexcept {
  return detail::within(a.width, b.width, accuracy) && detail::within(a.height, b.height, accuracy);
}
[[nodiscard]] inline bool TQRectEqualToRectWithAccuracy(const Rect& a, const Rect& b,
                                                        double accuracy) noexcept {
  return TQPointEqualToPointWithAccuracy(a.origin, b.origin, accuracy) &&
         TQSizeEqualToSizeWithAccuracy(a.size, b.size, accuracy);
}

/// True when every component is within 255 units in the last place and of one sign. +0 equals -0.
/// A NaN never makes two values unequal.
[[nodiscard]] inline bool TQPointApproximatelyEqual(Point a, Point b) noexcept {
  return detail::nearlyEqual(a.x, b.x) && detail::nearlyEqual(a.y, b.y);
}
[[nodiscard]] inline bool TQSizeApproximatelyEqual(Size a, Size b) noexcept {
  return detail::nearlyEqual(a.width, b.width) && detail::nearlyEqual(a.height, b.height);
}
[[nodiscard]] inline bool TQRectApproximatelyEqual(const Rect& a, const Rect& b) noexcept {
  return TQPointApproximatelyEqual(a.origin, b.origin) && TQSizeApproximatelyEqual(a.size, b.size);
}

/// True when every component differs by strictly less than 0.001. NaN makes it false, and so do two
/// equal infinities, whose difference is NaN.
[[nodiscard]] inline bool TQRectFuzzyEqualToRect(const Rect& a, const Rect& b) noexcept {
  return detail::fuzzyEqual(a.origin.x, b.origin.x) && detail::fuzzyEqual(a.origin.y, b.origin.y) &&
         detail::fuzzyEqual(a.size.width, b.size.width) &&
         detail::fuzzyEqual(a.size.height, b.size.height);
}

}  // namespace tq
