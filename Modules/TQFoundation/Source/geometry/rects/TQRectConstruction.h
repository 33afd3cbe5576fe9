#pragma once

/// @file TQRectConstruction.h
/// Rects made from points and sizes, flipped, and placed by their middle or by an edge.
///
/// Reads of min, mid and max standardise the rect; "raw" means the fields as they stand. Nothing
/// fails: NaN and infinities flow through.

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/Rect.h>

namespace tq {

/// The same two numbers.
[[nodiscard]] constexpr Point TQPointFromSize(Size size) noexcept {
  return {size.width, size.height};
}
[[nodiscard]] constexpr Size TQSizeFromPoint(Point point) noexcept { return {point.x, point.y}; }

/// At the origin (0, 0).
[[nodiscard]] constexpr Rect TQRectFromSize(Size size) noexcept { return {{}, size}; }

/// The fields as given, not standardised.
[[nodiscard]] constexpr Rect TQRectWithOriginAndSize(Point origin, Size size) noexcept {
  return {origin, size};
}

/// The rect that two opposite corners span, in any order; extents of 0 or more.
[[nodiscard]] constexpr Rect TQRectFromPoints(Point a, Point b) noexcept {
  return {a.x < b.x ? a.x : b.x, a.y < b.y ? a.y : b.y, a.x < b.x ? b.x - a.x : a.x - b.x,
          a.y < b.y ? b.y - a.y : a.y - b.y};
}

/// The size as it is, with its middle at the point.
[[nodiscard]] constexpr Rect TQRectWithSizeCenteredAtPoint(Size size, Point point) noexcept {
  return {{point.x - size.width / 2, point.y - size.height / 2}, size};
}

/// The size as it is, with its middle at the middle of `rect`.
[[nodiscard]] constexpr Rect TQRectWithSizeCenteredInRect(Size size, const Rect& rect) noexcept {
  return TQRectWithSizeCenteredAtPoint(size, {RectGetMidX(rect), RectGetMidY(rect)});
}

/// The square that reaches `margin` from the point on every side.
[[nodiscard]] constexpr Rect TQRectWithMarginAroundPoint(double margin, Point point) noexcept {
  return {point.x - margin, point.y - margin, margin * 2, margin * 2};
}

/// Where a raw extent is below the minimum, the minimum takes its place around the same middle.
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

/// Smallest rect that holds `rect` and the point; that of the point alone when `rect` is null.
[[nodiscard]] constexpr Rect TQRectPointUnion(Point point, const Rect& rect) noexcept {
  return RectUnion(rect, {point, {}});
}

/// The same area written from the other side of each axis in the mask: the raw origin moves to the
/// far end and the raw extent changes its sign.
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

/// (midX, midY) of the standardised rect.
[[nodiscard]] constexpr Point TQRectGetMid(const Rect& rect) noexcept {
  return {RectGetMidX(rect), RectGetMidY(rect)};
}

/// Moved so that the middle is there: the raw origin becomes mid - extent / 2, the size stays.
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

/// One edge moved to `value`, the opposite edge kept. An edge moved past the opposite one leaves a
/// negative extent on that axis; the other axis is not touched.
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
