#pragma once

/// @file TQRectMoving.h
/// Moves rects into a container, and measures the paddings between an inner and an outer rect.

#include <limits>
#include <type_traits>

#include <TQFoundation/base/Rect.h>

namespace tq {

/// The distances from the edges of an outer rect to those of an inner rect. y grows upwards: the
/// top is the maximum of y.
struct TQEdgePaddings {
  /// In the rects' unit. Negative where the inner rect extends beyond the outer one.
  double top = 0;
  double left = 0;
  double bottom = 0;
  double right = 0;
};

/// Returns whether all four fields are equal. +0 equals -0, and NaN equals nothing.
[[nodiscard]] constexpr bool TQEdgePaddingsEqualToEdgePaddings(const TQEdgePaddings& a,
                                                               const TQEdgePaddings& b) noexcept {
  return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

/// Returns the paddings of `inner` in `outer`. All four are positive if the inner rect is strictly
/// inside the outer one.
[[nodiscard]] constexpr TQEdgePaddings TQEdgePaddingsMakeWithRects(const Rect& inner,
                                                                   const Rect& outer) noexcept {
  return {RectGetMaxY(outer) - RectGetMaxY(inner), RectGetMinX(inner) - RectGetMinX(outer),
          RectGetMinY(inner) - RectGetMinY(outer), RectGetMaxX(outer) - RectGetMaxX(inner)};
}

namespace detail {

/// The values of both axes, which one instruction handles.
using BothAxes = double __attribute__((vector_size(2 * sizeof(double))));

/// TQRectMoveIntoRect() on one axis (double) or on both (BothAxes). The far edge is `leastMax` if
/// that is greater. There are no branches: the processor would mispredict whether a rect is moved.
template <class Value>
[[nodiscard]] constexpr Value movedInto(Value origin, Value extent, Value leastMax,
                                        Value containerOrigin, Value containerMax) noexcept {
  const Value zero{};
  const Value negated = zero - extent;
  const Value magnitude = extent > negated ? extent : negated;
  const Value standardMax = (origin + (extent < zero ? extent : zero)) + magnitude;
  const Value max = standardMax > leastMax ? standardMax : leastMax;
  const Value pulledBack = containerMax < max ? containerMax - magnitude : origin;
  return pulledBack < containerOrigin ? containerOrigin : pulledBack;
}

}  // namespace detail

/// Moves the rect so that it does not extend beyond the container. The raw size is kept. A rect
/// that is larger than the container is aligned to the container's raw origin. For extents of 0 or
/// more; where the far edge is moved, a negative extent counts by its magnitude.
[[nodiscard]] constexpr Rect TQRectMoveIntoRect(const Rect& rect, const Rect& container) noexcept {
  // Both far edges of a null rect are infinite.
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double leastMaxX = rect.origin.x == kInfinity ? kInfinity : -kInfinity;
  const double leastMaxY = rect.origin.y == kInfinity ? kInfinity : -kInfinity;
  const double leastMax = leastMaxX > leastMaxY ? leastMaxX : leastMaxY;
  const Point max{RectGetMaxX(container), RectGetMaxY(container)};
  if (std::is_constant_evaluated()) {
    return {
        {detail::movedInto(rect.origin.x, rect.size.width, leastMax, container.origin.x, max.x),
         detail::movedInto(rect.origin.y, rect.size.height, leastMax, container.origin.y, max.y)},
        rect.size};
  }
  using Both = detail::BothAxes;
  const Both moved = detail::movedInto(
      Both{rect.origin.x, rect.origin.y}, Both{rect.size.width, rect.size.height},
      Both{leastMax, leastMax}, Both{container.origin.x, container.origin.y}, Both{max.x, max.y});
  return {{moved[0], moved[1]}, rect.size};
}

/// Moves the rect by the least distance that brings its middle into the container, bounds included.
/// The raw size is kept.
[[nodiscard]] constexpr Rect TQRectByEnsuringMidIsContainedInRect(Rect rect,
                                                                  const Rect& container) noexcept {
  const double halfWidth = rect.size.width / 2;
  const double halfHeight = rect.size.height / 2;
  if (RectGetMidX(rect) < RectGetMinX(container)) {
    rect.origin.x = RectGetMinX(container) - halfWidth;
  }
  if (RectGetMaxX(container) < RectGetMidX(rect)) {
    rect.origin.x = RectGetMaxX(container) - halfWidth;
  }
  if (RectGetMidY(rect) < RectGetMinY(container)) {
    rect.origin.y = RectGetMinY(container) - halfHeight;
  }
  if (RectGetMaxY(container) < RectGetMidY(rect)) {
    rect.origin.y = RectGetMaxY(container) - halfHeight;
  }
  return rect;
}

}  // namespace tq
