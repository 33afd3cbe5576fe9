#pragma once

/// @file Rect.h
/// Rects: an origin and a size. Extents may be negative.
///
/// Every function here standardises its arguments first unless documented otherwise. None of them
/// allocates or fails; all may be called on any thread. "Raw" means the fields without
/// standardisation.

#include <limits>
#include <type_traits>

#include <TQFoundation/base/Point.h>

namespace tq {

/// An area parallel to the axes. The fields are raw; the functions below standardise them.
struct Rect {
  /// One corner: the smallest coordinates if the extents are not negative.
  Point origin;
  /// The distance from `origin` to the opposite corner on each axis.
  Size size;

  constexpr Rect() noexcept = default;
  /// Stores the fields as given, without standardisation.
  constexpr Rect(Point rectOrigin, Size rectSize) noexcept : origin(rectOrigin), size(rectSize) {}
  constexpr Rect(double x, double y, double width, double height) noexcept
      : origin{x, y}, size{width, height} {}
};
static_assert(std::is_trivially_copyable_v<Rect> && sizeof(Rect) == 32, "boxed by its bytes");

/// The rect whose four fields are 0. It is a point at the origin, not the null rect.
inline constexpr Rect RectZero{};

/// The rect that contains nothing: the intersection of disjoint rects.
inline constexpr Rect RectNull{std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::infinity(), 0, 0};

/// The rect with edges at ±DBL_MAX / 2. It is treated as any other rect: it intersects every rect
/// that reaches into that range, edges included, and none beyond.
inline constexpr Rect RectInfinite{
    -std::numeric_limits<double>::max() / 2, -std::numeric_limits<double>::max() / 2,
    std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};

/// Returns true if x or y is +infinity, for any size.
[[nodiscard]] constexpr bool RectIsNull(const Rect& rect) noexcept {
  return rect.origin.x == std::numeric_limits<double>::infinity() ||
         rect.origin.y == std::numeric_limits<double>::infinity();
}

/// Returns true for the null rect and for a rect of width 0 or height 0.
[[nodiscard]] constexpr bool RectIsEmpty(const Rect& rect) noexcept {
  return RectIsNull(rect) || rect.size.width == 0 || rect.size.height == 0;
}

/// Returns the same area with extents of 0 or more, and the null rect for every null rect.
[[nodiscard]] constexpr Rect RectStandardize(const Rect& rect) noexcept {
  if (RectIsNull(rect)) return RectNull;
  Rect result = rect;
  if (result.size.width < 0) {
    result.origin.x += result.size.width;
    result.size.width = -result.size.width;
  }
  if (result.size.height < 0) {
    result.origin.y += result.size.height;
    result.size.height = -result.size.height;
  }
  return result;
}

/// Returns the smallest x.
[[nodiscard]] constexpr double RectGetMinX(const Rect& rect) noexcept {
  return RectStandardize(rect).origin.x;
}

/// Returns min + extent / 2, which can differ from (min + max) / 2 in the last bit.
[[nodiscard]] constexpr double RectGetMidX(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.x + standard.size.width / 2;
}

/// Returns min + extent.
[[nodiscard]] constexpr double RectGetMaxX(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.x + standard.size.width;
}

/// Returns the smallest y.
[[nodiscard]] constexpr double RectGetMinY(const Rect& rect) noexcept {
  return RectStandardize(rect).origin.y;
}

/// Returns min + extent / 2, which can differ from (min + max) / 2 in the last bit.
[[nodiscard]] constexpr double RectGetMidY(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.y + standard.size.height / 2;
}

/// Returns min + extent.
[[nodiscard]] constexpr double RectGetMaxY(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.y + standard.size.height;
}

/// Returns the magnitude; +0 for +0 and -0.
[[nodiscard]] constexpr double RectGetWidth(const Rect& rect) noexcept {
  return rect.size.width > 0 ? rect.size.width : 0 - rect.size.width;
}

/// Returns the magnitude; +0 for +0 and -0.
[[nodiscard]] constexpr double RectGetHeight(const Rect& rect) noexcept {
  return rect.size.height > 0 ? rect.size.height : 0 - rect.size.height;
}

/// Returns true if both are null, or if their standardised fields are equal, where NaN equals
/// nothing.
[[nodiscard]] constexpr bool RectEqualToRect(const Rect& a, const Rect& b) noexcept {
  if (RectIsNull(a) || RectIsNull(b)) return RectIsNull(a) && RectIsNull(b);
  const Rect one = RectStandardize(a);
  const Rect other = RectStandardize(b);
  return one.origin == other.origin && one.size == other.size;
}

/// RectEqualToRect().
[[nodiscard]] constexpr bool operator==(const Rect& a, const Rect& b) noexcept {
  return RectEqualToRect(a, b);
}

namespace detail {

/// Returns the range from the smaller minimum to the larger maximum on each axis, for null rects
/// too. If a bound of `a` is NaN, the bound of `b` is used.
[[nodiscard]] constexpr Rect boundsOfBoth(const Rect& a, const Rect& b) noexcept {
  const Rect one = RectStandardize(a);
  const Rect other = RectStandardize(b);
  const double oneMaxX = one.origin.x + one.size.width;
  const double oneMaxY = one.origin.y + one.size.height;
  const double otherMaxX = other.origin.x + other.size.width;
  const double otherMaxY = other.origin.y + other.size.height;
  const double minX = one.origin.x < other.origin.x ? one.origin.x : other.origin.x;
  const double minY = one.origin.y < other.origin.y ? one.origin.y : other.origin.y;
  const double maxX = oneMaxX > otherMaxX ? oneMaxX : otherMaxX;
  const double maxY = oneMaxY > otherMaxY ? oneMaxY : otherMaxY;
  return {minX, minY, maxX - minX, maxY - minY};
}

}  // namespace detail

/// Returns the smallest rect that contains both. If one is null, the other one is returned raw. A
/// rect of size 0 counts as a point. If a coordinate of either is NaN, the coordinate of `b` is
/// used. The extent is max - min, which is rounded: the maximum of the result may differ by half a
/// unit in the last place of the extent, in either direction.
[[nodiscard]] constexpr Rect RectUnion(const Rect& a, const Rect& b) noexcept {
  if (RectIsNull(a)) return b;
  if (RectIsNull(b)) return a;
  return detail::boundsOfBoth(a, b);
}

namespace detail {

/// The overlap of two closed intervals. `met` is false if they are disjoint or if any bound is NaN.
struct Overlap {
  double origin = 0;
  double extent = 0;
  bool met = false;
};

/// If one interval is inside the other, its own extent is returned, without rounding.
[[nodiscard]] constexpr Overlap overlap(double aMin, double aExtent, double bMin,
                                        double bExtent) noexcept {
  const double aMax = aMin + aExtent;
  const double bMax = bMin + bExtent;
  if (!(aMin <= bMax && bMin <= aMax)) return {};
  if (aMin <= bMin && bMax <= aMax) return {bMin, bExtent, true};
  if (bMin <= aMin && aMax <= bMax) return {aMin, aExtent, true};
  const double min = aMin < bMin ? bMin : aMin;
  const double max = bMax < aMax ? bMax : aMax;
  return {min, max - min, true};
}

}  // namespace detail

/// Returns the area that both rects contain; the null rect if they are disjoint, if either is null,
/// or if a coordinate is NaN. Rects are closed: a shared edge or corner is an intersection without
/// area.
[[nodiscard]] constexpr Rect RectIntersection(const Rect& a, const Rect& b) noexcept {
  if (RectIsNull(a) || RectIsNull(b)) return RectNull;
  const Rect one = RectStandardize(a);
  const Rect other = RectStandardize(b);
  const detail::Overlap x =
      detail::overlap(one.origin.x, one.size.width, other.origin.x, other.size.width);
  const detail::Overlap y =
      detail::overlap(one.origin.y, one.size.height, other.origin.y, other.size.height);
  if (!x.met || !y.met) return RectNull;
  return {x.origin, y.origin, x.extent, y.extent};
}

/// Returns true if the intersection is not the null rect. Rects that only touch intersect.
[[nodiscard]] constexpr bool RectIntersectsRect(const Rect& a, const Rect& b) noexcept {
  if (RectIsNull(a) || RectIsNull(b)) return false;
  const Rect one = RectStandardize(a);
  const Rect other = RectStandardize(b);
  return one.origin.x <= other.origin.x + other.size.width &&
         other.origin.x <= one.origin.x + one.size.width &&
         one.origin.y <= other.origin.y + other.size.height &&
         other.origin.y <= one.origin.y + one.size.height;
}

/// Returns true if the rect contains the point. The minimum edges belong to the rect, the maximum
/// edges do not. An empty rect contains no point.
[[nodiscard]] constexpr bool RectContainsPoint(const Rect& rect, Point point) noexcept {
  if (RectIsEmpty(rect)) return false;
  const Rect standard = RectStandardize(rect);
  return standard.origin.x <= point.x && point.x < standard.origin.x + standard.size.width &&
         standard.origin.y <= point.y && point.y < standard.origin.y + standard.size.height;
}

/// Returns true if the union of both equals `rect`. Every rect without NaN contains the null rect.
/// Rounding of max - min can make the result false for a rect that is inside.
[[nodiscard]] constexpr bool RectContainsRect(const Rect& rect, const Rect& inner) noexcept {
  return RectEqualToRect(RectUnion(rect, inner), rect);
}

}  // namespace tq
