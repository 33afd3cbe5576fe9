#pragma once

/// @file TQRectEquality.h
/// Points, sizes and rects compared with a tolerance: absolute, in units in the last place, or a
/// thousandth. Raw fields throughout.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// True when no component differs by more than `accuracy`; a difference of just that passes. A
/// difference that is NaN is not more than anything, so it passes too.
[[nodiscard]] TQ_EXPORT bool TQPointEqualToPointWithAccuracy(Point a, Point b,
                                                             double accuracy) noexcept;
[[nodiscard]] TQ_EXPORT bool TQSizeEqualToSizeWithAccuracy(Size a, Size b,
                                                           double accuracy) noexcept;
[[nodiscard]] TQ_EXPORT bool TQRectEqualToRectWithAccuracy(const Rect& a, const Rect& b,
                                                           double accuracy) noexcept;

/// True when every component is within 255 units in the last place and of one sign. +0 equals -0.
/// A NaN never makes two values unequal.
[[nodiscard]] TQ_EXPORT bool TQPointApproximatelyEqual(Point a, Point b) noexcept;
[[nodiscard]] TQ_EXPORT bool TQSizeApproximatelyEqual(Size a, Size b) noexcept;
[[nodiscard]] TQ_EXPORT bool TQRectApproximatelyEqual(const Rect& a, const Rect& b) noexcept;

/// True when every component differs by strictly less than 0.001. NaN makes it false, and so do two
/// equal infinities, whose difference is NaN.
[[nodiscard]] TQ_EXPORT bool TQRectFuzzyEqualToRect(const Rect& a, const Rect& b) noexcept;

}  // namespace tq
