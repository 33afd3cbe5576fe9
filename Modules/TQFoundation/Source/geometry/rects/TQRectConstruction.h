#pragma once

/// @file TQRectConstruction.h
/// Creates rects from points and sizes, flips them, and places them by their middle or by an edge.
///
/// min, mid and max are those of the standardised rect; "raw" means the fields without
/// standardising. No function reports an error: NaN and infinities propagate.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>

namespace tq {

/// The same two numbers as the other type.
[[nodiscard]] constexpr Point TQPointFromSize(Size size) noexcept {
  return {size.width, size.height};
}
[[nodiscard]] constexpr Size TQSizeFromPoint(Point point) noexcept { return {point.x, point.y}; }

/// Returns the rect with this size at the origin (0, 0).
[[nodiscard]] constexpr Rect TQRectFromSize(Size size) noexcept { return {{}, size}; }

/// Returns the rect with these fields, not standardised.
[[nodiscard]] constexpr Rect TQRectWithOriginAndSize(Point origin, Size size) noexcept {
  return {origin, size};
}

/// Returns the rect with these two opposite corners, given in any order. Its extents are 0 or more.
[[nodiscard]] constexpr Rect TQRectFromPoints(Point a, Point b) noexcept {
  return {a.x < b.x ? a.x : b.x, a.y < b.y ? a.y : b.y, a.x < b.x ? b.x - a.x : a.x - b.x,
          a.y < b.y ? b.y - a.y : a.y - b.y};
}

/// Returns the rect with this size whose middle is at the point. The size is not standardised.
[[nodiscard]] constexpr Rect TQRectWithSizeCenteredAtPoint(Size size, Point point) noexcept {
  return {{point.x - size.width / 2, point.y - size.height / 2}, size};
}

/// Returns the rect with this size whose middle is the middle of `rect`. The size is not
/// standardised.
[[nodiscard]] constexpr Rect TQRectWithSizeCenteredInRect(Size size, const Rect& rect) noexcept {
  return TQRectWithSizeCenteredAtPoint(size, {RectGetMidX(rect), RectGetMidY(rect)});
}

/// Returns the square whose edges are `margin` away from the point.
[[nodiscard]] constexpr Rect TQRectWithMarginAroundPoint(double margin, Point point) noexcept {
  return {point.x - margin, point.y - margin, margin * 2, margin * 2};
}

/// Enlarges each raw extent that is below the minimum to the minimum. The middle stays where it is.
[[nodiscard]] constexpr Rect TQRectWithMinSize(Size minSize, Rect rect) noexcept {
  if (rect.size.width < minSize.width) {
    rect.origin.x += (rect.size.width - minSize.width) / 2;
    rect.size.width = minSize.width;
  }
  if (rect.size.height < minSize.height) {
    rect.origin.y += (rect.size.height - minSize.height) / 2;
    rect.size.height = minSize.height;
  }
  return rect;
}

/// Returns the smallest rect that contains `rect` and the point, rounded like RectUnion(). If
/// `rect` is null, this is a rect of size 0 at the point.
[[nodiscard]] constexpr Rect TQRectPointUnion(Point point, const Rect& rect) noexcept {
  return RectUnion(rect, {point, {}});
}

/// Returns the same area with its origin on the other side, for each axis in the mask: the raw
/// origin moves to the far end, and the raw extent changes its sign.
[[nodiscard]] constexpr Rect TQRectFlip(Rect rect, AxisMask axisMask) noexcept {
  if (contains(axisMask, Axis::horizontal)) {
    rect.origin.x += rect.size.width;
    rect.size.width = -rect.size.width;
  }
  if (contains(axisMask, Axis::vertical)) {
    rect.origin.y += rect.size.height;
    rect.size.height = -rect.size.height;
  }
  return rect;
}

/// Returns (midX, midY) of the standardised rect.
[[nodiscard]] constexpr Point TQRectGetMid(const Rect& rect) noexcept {
  return {RectGetMidX(rect), RectGetMidY(rect)};
}

/// Moves the rect so that its middle is at the given place: the raw origin becomes mid - extent /
/// 2. The size is kept.
[[nodiscard]] constexpr Rect TQRectWithMidX(double midX, Rect rect) noexcept {
  rect.origin.x = midX - rect.size.width / 2;
  return rect;
}
[[nodiscard]] constexpr Rect TQRectWithMidY(double midY, Rect rect) noexcept {
  rect.origin.y = midY - rect.size.height / 2;
  return rect;
}
[[nodiscard]] constexpr Rect TQRectWithMid(Point mid, const Rect& rect) noexcept {
  return TQRectWithMidX(mid.x, TQRectWithMidY(mid.y, rect));
}

/// Moves one edge to `value` and keeps the opposite edge. If the edge passes the opposite one, the
/// extent becomes negative. The other axis is not changed.
[[nodiscard]] constexpr Rect TQRectResizeMinXTo(double value, const Rect& rect) noexcept {
  return {value, rect.origin.y, RectGetMaxX(rect) - value, rect.size.height};
}
[[nodiscard]] constexpr Rect TQRectResizeMaxXTo(double value, const Rect& rect) noexcept {
  return {RectGetMinX(rect), rect.origin.y, value - RectGetMinX(rect), rect.size.height};
}
[[nodiscard]] constexpr Rect TQRectResizeMinYTo(double value, const Rect& rect) noexcept {
  return {rect.origin.x, value, rect.size.width, RectGetMaxY(rect) - value};
}
[[nodiscard]] constexpr Rect TQRectResizeMaxYTo(double value, const Rect& rect) noexcept {
  return {rect.origin.x, RectGetMinY(rect), rect.size.width, value - RectGetMinY(rect)};
}

}  // namespace tq
