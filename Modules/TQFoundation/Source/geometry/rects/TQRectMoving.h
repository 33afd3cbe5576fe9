#pragma once

/// @file TQRectMoving.h
/// Rects moved into a container, and the paddings between an inner and an outer rect.

#include <TQFoundation/base/Rect.h>

namespace tq {

/// Distances from the edges of an outer rect to those of an inner one. y grows upwards: the top is
/// the maximum of y.
struct TQEdgePaddings {
  /// In the rects' unit; negative where the inner rect sticks out.
  double top = 0;
  double left = 0;
  double bottom = 0;
  double right = 0;
};

/// Exactly the same four fields: +0 equals -0, NaN equals nothing.
[[nodiscard]] constexpr bool TQEdgePaddingsEqualToEdgePaddings(const TQEdgePaddings& a,
                                                               const TQEdgePaddings& b) noexcept {
  return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

/// All four are positive when the inner rect lies strictly inside the outer one.
[[nodiscard]] constexpr TQEdgePaddings TQEdgePaddingsMakeWithRects(const Rect& inner,
                                                                   const Rect& outer) noexcept {
  return {RectGetMaxY(outer) - RectGetMaxY(inner), RectGetMinX(inner) - RectGetMinX(outer),
          RectGetMinY(inner) - RectGetMinY(outer), RectGetMaxX(outer) - RectGetMaxX(inner)};
}

/// Moved back where it sticks out of the container; the raw size stays. A rect larger than the
/// container is aligned to its raw origin. For extents of 0 or more; a negative one counts by its
/// magnitude when the far edge is moved.
[[nodiscard]] constexpr Rect TQRectMoveIntoRect(const Rect& rect, const Rect& container) noexcept {
  const auto moved = [](double origin, double extent, double max, double containerOrigin,
                        double containerMax) {
    const double pulledBack = containerMax < max ? containerMax - extent : origin;
    return pulledBack < containerOrigin ? containerOrigin : pulledBack;
  };
  return {{moved(rect.origin.x, RectGetWidth(rect), RectGetMaxX(rect), container.origin.x,
                 RectGetMaxX(container)),
           moved(rect.origin.y, RectGetHeight(rect), RectGetMaxY(rect), container.origin.y,
                 RectGetMaxY(container))},
          rect.size};
}

/// Moved just so far that its middle lies in the container, bounds included; the raw size stays.
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
