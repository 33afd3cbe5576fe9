#pragma once

/// @file TQRectEquality.h
/// Compares points, sizes and rects with a tolerance: absolute, in units in the last place, or
/// 0.001. All functions compare raw fields.

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
  if (!(a < b) && !(a > b)) return true;  // equal, or one is NaN
  const auto one = std::bit_cast<std::uint64_t>(a);
  const auto other = std::bit_cast<std::uint64_t>(b);
  if (((one ^ other) >> 63) != 0) return false;
  // For numbers of the same sign, the difference of the bit patterns counts the doubles between
  // them.
  return (one > other ? one - other : other - one) <= 255;
}

[[nodiscard]] inline bool fuzzyEqual(double a, double b) noexcept {
  return std::fabs(a - b) < 0.001;
}

}  // namespace detail

/// Returns whether no component differs by more than `accuracy`. A difference of exactly `accuracy`
/// is accepted. A difference that is NaN is accepted too, because it is not greater than anything.
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

/// Returns whether all components have the same sign and differ by at most 255 units in the last
/// place. +0 equals -0. NaN is accepted: it never makes the result false.
[[nodiscard]] inline bool TQPointApproximatelyEqual(Point a, Point b) noexcept {
  return detail::nearlyEqual(a.x, b.x) && detail::nearlyEqual(a.y, b.y);
}
[[nodiscard]] inline bool TQSizeApproximatelyEqual(Size a, Size b) noexcept {
  return detail::nearlyEqual(a.width, b.width) && detail::nearlyEqual(a.height, b.height);
}
[[nodiscard]] inline bool TQRectApproximatelyEqual(const Rect& a, const Rect& b) noexcept {
  return TQPointApproximatelyEqual(a.origin, b.origin) && TQSizeApproximatelyEqual(a.size, b.size);
}

/// Returns whether every component differs by less than 0.001. NaN makes the result false. Two
/// equal infinities make it false too, because their difference is NaN.
[[nodiscard]] inline bool TQRectFuzzyEqualToRect(const Rect& a, const Rect& b) noexcept {
  return detail::fuzzyEqual(a.origin.x, b.origin.x) && detail::fuzzyEqual(a.origin.y, b.origin.y) &&
         detail::fuzzyEqual(a.size.width, b.size.width) &&
         detail::fuzzyEqual(a.size.height, b.size.height);
}

}  // namespace tq
