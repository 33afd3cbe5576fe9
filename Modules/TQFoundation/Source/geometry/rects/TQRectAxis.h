#pragma once

/// @file TQRectAxis.h
/// Rect accessors and relations for an axis that is chosen at run time.
///
/// `horizontal` uses x and width; every other axis value uses y and height. min, mid and max are
/// those of the standardised rect; "raw" means the fields without standardising. NaN propagates.

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

/// Returns RectGetMinX() or RectGetMinY().
[[nodiscard]] constexpr double TQRectMinForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetMinX(rect) : RectGetMinY(rect);
}

/// Returns the middle, min + extent / 2.
[[nodiscard]] constexpr double TQRectMidForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetMidX(rect) : RectGetMidY(rect);
}

/// Returns RectGetMaxX() or RectGetMaxY().
[[nodiscard]] constexpr double TQRectMaxForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetMaxX(rect) : RectGetMaxY(rect);
}

/// Returns the magnitude of the extent, also for a null rect.
[[nodiscard]] constexpr double TQRectSizeForAxis(Axis axis, const Rect& rect) noexcept {
  return axis == Axis::horizontal ? RectGetWidth(rect) : RectGetHeight(rect);
}

/// Returns the range of the rect on the axis, from its minimum. The length is 0 or more.
[[nodiscard]] constexpr TQFloatRange TQRectRangeForAxis(Axis axis, const Rect& rect) noexcept {
  return {TQRectMinForAxis(axis, rect), TQRectSizeForAxis(axis, rect)};
}

/// Moves the rect so that its minimum is `min`. The raw size is kept, even if negative.
[[nodiscard]] constexpr Rect TQRectWithMinForAxis(Axis axis, double min, Rect rect) noexcept {
  const double extent = detail::extentOn(axis, rect);
  detail::originOn(axis, rect) = extent < 0 ? min - extent : min;
  return rect;
}

/// Moves the rect so that its middle is `mid`: the origin becomes mid - extent / 2.
[[nodiscard]] constexpr Rect TQRectWithMidForAxis(Axis axis, double mid, Rect rect) noexcept {
  detail::originOn(axis, rect) = mid - detail::extentOn(axis, rect) / 2;
  return rect;
}

/// Moves the rect so that its maximum is `max`. The raw size is kept, even if negative.
[[nodiscard]] constexpr Rect TQRectWithMaxForAxis(Axis axis, double max, Rect rect) noexcept {
  const double extent = detail::extentOn(axis, rect);
  detail::originOn(axis, rect) = extent < 0 ? max : max - extent;
  return rect;
}

/// Sets the raw extent and keeps the raw origin.
[[nodiscard]] constexpr Rect TQRectWithSizeForAxis(Axis axis, double size, Rect rect) noexcept {
  detail::extentOn(axis, rect) = size;
  return rect;
}

/// Returns the raw origin for order 0, and the maximum for any other order.
[[nodiscard]] constexpr double TQRectValueForAxisInOrder(Axis axis, int order,
                                                         const Rect& rect) noexcept {
  return order == 0 ? detail::originOn(axis, rect) : TQRectMaxForAxis(axis, rect);
}

/// Moves one end of the rect by `value` and keeps the other. Order 0 moves the raw origin. Any
/// other order moves the raw far end, origin + extent. For extents of 0 or more these are the two
/// values that TQRectValueForAxisInOrder() returns. The result is not standardised.
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

/// Returns the value named "minX", "midX", "maxX", "minY", "midY" or "maxY", or 0 for any other
/// name.
[[nodiscard]] TQ_EXPORT double TQRectValueForKey(const Rect& rect, std::string_view key) noexcept;

/// Returns whether the rects overlap on the axis by a length above 0. Uses raw fields, for extents
/// of 0 or more. If an origin is NaN, every comparison is false and the whole extent of `b` counts
/// as the overlap.
[[nodiscard]] TQ_EXPORT bool TQRectIntersectsRectOnAxis(Axis axis, const Rect& a,
                                                        const Rect& b) noexcept;

/// Like TQRectIntersectsRectOnAxis(), but also true if one rect ends exactly where the other
/// starts.
[[nodiscard]] TQ_EXPORT bool TQRectIntersectsOrAbutsRectOnAxis(Axis axis, const Rect& a,
                                                               const Rect& b) noexcept;

/// Returns whether `b` is within `a` on the axis, bounds included: a rect contains itself. False
/// for NaN and for an unknown axis value.
[[nodiscard]] TQ_EXPORT bool TQRectContainsRectOnAxis(Axis axis, const Rect& a,
                                                      const Rect& b) noexcept;

}  // namespace tq
