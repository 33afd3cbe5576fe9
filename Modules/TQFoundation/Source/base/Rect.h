#pragma once

/// @file Rect.h
/// Rects: an origin and a size, either of whose extents may be negative.
///
/// Every function here standardises its arguments first unless it says otherwise, allocates
/// nothing, may be called on any thread and never fails. "Raw" means the fields as they stand.

#include <limits>
#include <type_traits>

#include <TQFoundation/base/Point.h>

namespace tq {

/// An area parallel to the axes, as its fields say ("raw"). See above for what is done to them.
struct Rect {
  /// One corner: the least coordinates, where the extents are not negative.
  Point origin;
  /// From `origin` to the opposite corner.
  Size size;

  constexpr Rect() noexcept = default;
  /// The fields as given, not standardised.
  constexpr Rect(Point rectOrigin, Size rectSize) noexcept : origin(rectOrigin), size(rectSize) {}
  constexpr Rect(double x, double y, double width, double height) noexcept
      : origin{x, y}, size{width, height} {}
};
static_assert(std::is_trivially_copyable_v<Rect> && sizeof(Rect) == 32, "boxed by its bytes");

/// All four fields 0. A point at the origin, not the null rect.
inline constexpr Rect RectZero{};

/// The rect that is nowhere: what disjoint rects have in common.
inline constexpr Rect RectNull{std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::infinity(), 0, 0};

/// The rect that meets every rect which reaches into ±DBL_MAX / 2, where its edges are; beyond them
/// rects are closed as everywhere.
inline constexpr Rect RectInfinite{
    -std::numeric_limits<double>::max() / 2, -std::numeric_limits<double>::max() / 2,
    std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};

/// True when x or y is +infinity, whatever the size.
[[nodiscard]] constexpr bool RectIsNull(const Rect& rect) noexcept {
  return rect.origin.x == std::numeric_limits<double>::infinity() ||
         rect.origin.y == std::numeric_limits<double>::infinity();
}

/// True for the null rect and for a rect without width or without height.
[[nodiscard]] constexpr bool RectIsEmpty(const Rect& rect) noexcept {
  return RectIsNull(rect) || rect.size.width == 0 || rect.size.height == 0;
}

/// The same area with extents of 0 or more; the null rect for every null rect.
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

/// The least x.
[[nodiscard]] constexpr double RectGetMinX(const Rect& rect) noexcept {
  return RectStandardize(rect).origin.x;
}

/// min + extent / 2, which differs from (min + max) / 2 in the last bit.
[[nodiscard]] constexpr double RectGetMidX(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.x + standard.size.width / 2;
}

/// min + extent.
[[nodiscard]] constexpr double RectGetMaxX(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.x + standard.size.width;
}

/// The least y.
[[nodiscard]] constexpr double RectGetMinY(const Rect& rect) noexcept {
  return RectStandardize(rect).origin.y;
}

/// min + extent / 2, which differs from (min + max) / 2 in the last bit.
[[nodiscard]] constexpr double RectGetMidY(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.y + standard.size.height / 2;
}

/// min + extent.
[[nodiscard]] constexpr double RectGetMaxY(const Rect& rect) noexcept {
  const Rect standard = RectStandardize(rect);
  return standard.origin.y + standard.size.height;
}

/// The magnitude, which is +0 for either zero.
[[nodiscard]] constexpr double RectGetWidth(const Rect& rect) noexcept {
  return rect.size.width > 0 ? rect.size.width : 0 - rect.size.width;
}

/// The magnitude, which is +0 for either zero.
[[nodiscard]] constexpr double RectGetHeight(const Rect& rect) noexcept {
  return rect.size.height > 0 ? rect.size.height : 0 - rect.size.height;
}

/// Both null, or the same four fields once standardised. NaN anywhere makes it false.
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

/// From the least minimum to the greatest maximum on each axis, null rects not excepted. Where a
/// bound of `a` is NaN, that of `b` is taken.
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

/// Smallest rect that holds both. A null rect adds nothing: the other one is then answered raw.
/// A rect of size 0 counts as a point. Where a coordinate of either is NaN, the one of `b` is
/// taken. The extent is max - min, so the maximum read back from the result may be one unit in the
/// last place below the true one.
[[nodiscard]] constexpr Rect RectUnion(const Rect& a, const Rect& b) noexcept {
  if (RectIsNull(a)) return b;
  if (RectIsNull(b)) return a;
  return detail::boundsOfBoth(a, b);
}

namespace detail {

/// Where two closed intervals overlap. `met` is false for disjoint ones and wherever a NaN is.
struct Overlap {
  double origin = 0;
  double extent = 0;
  bool met = false;
};

/// An interval inside the other keeps its own extent, so that no rounding creeps in.
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

/// What both rects hold; the null rect when they are disjoint, when either is null, and when a
/// coordinate is NaN. Rects are closed: a shared edge or corner is an intersection without area.
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

/// True when the intersection is not the null rect: rects that only touch intersect.
[[nodiscard]] constexpr bool RectIntersectsRect(const Rect& a, const Rect& b) noexcept {
  if (RectIsNull(a) || RectIsNull(b)) return false;
  const Rect one = RectStandardize(a);
  const Rect other = RectStandardize(b);
  return one.origin.x <= other.origin.x + other.size.width &&
         other.origin.x <= one.origin.x + one.size.width &&
         one.origin.y <= other.origin.y + other.size.height &&
         other.origin.y <= one.origin.y + one.size.height;
}

/// Half open: the minimum edges belong to the rect, the maximum edges do not. An empty rect holds
/// no point.
[[nodiscard]] constexpr bool RectContainsPoint(const Rect& rect, Point point) noexcept {
  if (RectIsEmpty(rect)) return false;
  const Rect standard = RectStandardize(rect);
  return standard.origin.x <= point.x && point.x < standard.origin.x + standard.size.width &&
         standard.origin.y <= point.y && point.y < standard.origin.y + standard.size.height;
}

/// True when the union of both equals `rect`: the null rect is inside everything. Rounding of
/// max - min can make it false for a rect that is truly inside.
[[nodiscard]] constexpr bool RectContainsRect(const Rect& rect, const Rect& inner) noexcept {
  return RectEqualToRect(RectUnion(rect, inner), rect);
}

}  // namespace tq
