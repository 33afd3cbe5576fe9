#pragma once

/// @file TQRectAxis.h
/// Rects read and changed on an axis that is known only at run time, and how two lie on it.
///
/// `horizontal` reads x and width; every other axis value reads y and height. Reads of min, mid and
/// max standardise the rect; "raw" means the fields as they stand. NaN flows through.

#include <string_view>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/rects/TQFloatRange.h>

namespace tq {

namespace detail {

[[nodiscard]] constexpr double& originOn(Axis axis, Rect& rect) noexcept {
  return axis == Axis::horizontal ? rect.origin.x : rect.origin.y;
}
[[nodiscard]] constexpr double originOn(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? rect.origin.x : rect.origin.y;
}
[[nodiscard]] constexpr double& extentOn(Axis axis, Rect& rect) noexcept {
  return axis == Axis::horizontal ? rect.size.width : rect.size.height;
}
[[nodiscard]] constexpr double extentOn(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? rect.size.width : rect.size.height;
}

}  // namespace detail

/// RectGetMinX() or RectGetMinY().
[[nodiscard]] constexpr double TQRectMinForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetMinX(rect) : RectGetMinY(rect);
}

/// min + extent / 2
[[nodiscard]] constexpr double TQRectMidForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetMidX(rect) : RectGetMidY(rect);
}

/// RectGetMaxX() or RectGetMaxY().
[[nodiscard]] constexpr double TQRectMaxForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetMaxX(rect) : RectGetMaxY(rect);
}

/// The magnitude of the extent; that of a null rect, too.
[[nodiscard]] constexpr double TQRectSizeForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetWidth(rect) : RectGetHeight(rect);
}

/// From the minimum, as long as the rect is on the axis.
[[nodiscard]] constexpr TQFloatRange TQRectRangeForAxis(Axis axis, const Rect& rect) noexcept {
  return {TQRectMinForAxis(axis, rect), TQRectSizeForAxis(axis, rect)};
}

/// Moves the rect so that its minimum reads `min`; the raw size stays, a negative one too.
[[nodiscard]] constexpr Rect TQRectWithMinForAxis(Axis axis, double min, Rect rect) noexcept {
  const double extent = detail::extentOn(axis, rect);
  detail::originOn(axis, rect) = extent < 0 ? min - extent : min;
  return rect;
}

/// Moves the rect so that its middle is at `mid`: the origin becomes mid - extent / 2.
[[nodiscard]] constexpr Rect TQRectWithMidForAxis(Axis axis, double mid, Rect rect) noexcept {
  detail::originOn(axis, rect) = mid - detail::extentOn(axis, rect) / 2;
  return rect;
}

/// Moves the rect so that its maximum is at `max`; the raw size stays, a negative one too.
[[nodiscard]] constexpr Rect TQRectWithMaxForAxis(Axis axis, double max, Rect rect) noexcept {
  const double extent = detail::extentOn(axis, rect);
  detail::originOn(axis, rect) = extent < 0 ? max : max - extent;
  return rect;
}

/// Sets the raw extent; the raw origin stays.
[[nodiscard]] constexpr Rect TQRectWithSizeForAxis(Axis axis, double size, Rect rect) noexcept {
  detail::extentOn(axis, rect) = size;
  return rect;
}

/// Order 0: the raw origin. Any other order: the maximum.
[[nodiscard]] constexpr double TQRectValueForAxisInOrder(Axis axis, int order,
                                                         const Rect& rect) noexcept {
  return order == 0 ? detail::originOn(axis, rect) : TQRectMaxForAxis(axis, rect);
}

/// Moves one end of the rect by `value` and keeps the other. Order 0 moves the raw origin, any
/// other order the raw far end, origin + extent: for extents of 0 or more these are the two values
/// that TQRectValueForAxisInOrder() reads. Not standardised.
[[nodiscard]] constexpr Rect TQRectAddValueForAxisInOrder(Axis axis, int order, double value,
                                                          Rect rect) noexcept {
  if (order == 0) {
    detail::originOn(axis, rect) += value;
    detail::extentOn(axis, rect) -= value;
  } else {
    detail::extentOn(axis, rect) += value;
  }
  return rect;
}

/// The value named "minX", "midX", "maxX", "minY", "midY" or "maxY"; 0 for any other name.
[[nodiscard]] TQ_EXPORT double TQRectValueForKey(const Rect& rect, std::string_view key) noexcept;

/// True when the rects share a stretch of the axis that is longer than 0. Raw fields, meant for
/// extents of 0 or more. An origin that is NaN fails every comparison of the steps, which then end
/// with the whole extent of `b` as the overlap.
[[nodiscard]] TQ_EXPORT bool TQRectIntersectsRectOnAxis(Axis axis, const Rect& a,
                                                        const Rect& b) noexcept;

/// The same, and true also when one ends exactly where the other starts. Raw fields.
[[nodiscard]] TQ_EXPORT bool TQRectIntersectsOrAbutsRectOnAxis(Axis axis, const Rect& a,
                                                               const Rect& b) noexcept;

/// True when `b` lies within `a` on the axis, bounds included: a rect contains itself. False for
/// NaN and for an axis value that is neither of the two.
[[nodiscard]] TQ_EXPORT bool TQRectContainsRectOnAxis(Axis axis, const Rect& a,
                                                      const Rect& b) noexcept;

}  // namespace tq
