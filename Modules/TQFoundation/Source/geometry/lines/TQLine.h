#pragma once

/// @file TQLine.h
/// Infinite lines in implicit form, line segments, and their intersections with each other and
/// rects.
///
/// Every function is pure and may be called on any thread. Those that return texts allocate, the
/// others do not. Angles are in radians, from the x axis towards the y axis. No function reports an
/// error: NaN and infinity propagate unless the comment says otherwise; only TQNormalizePolar and
/// LRAngleBetweenVectors stop the process for them. A function that adds to a product is not
/// inline, so that a caller's compiler flags cannot fuse the two operations.

#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <type_traits>

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/lines/Straight.h>

namespace tq {

/// "No intersection": both coordinates are the largest finite double.
inline constexpr Point TQLineNoIntersection{std::numeric_limits<double>::max(),
                                            std::numeric_limits<double>::max()};

/// The line of the points with a·x + b·y = c. (a, b) is the normal: the line is horizontal if a = 0
/// and vertical if b = 0. If a = b = 0, it has no direction, and functions return NaN, infinity or
/// nullopt.
struct TQLine {
  /// The coefficients of the equation, not normalised.
  double a = 0;
  double b = 0;
  double c = 0;

  /// Returns (b, -a). For a line made from a segment this is the direction of the segment, unless
  /// the segment was vertical or horizontal: then it is (0, -1) or (1, 0).
  [[nodiscard]] constexpr Vector direction() const noexcept { return {b, -a}; }
  /// A line has no ends.
  [[nodiscard]] constexpr bool isInfinite() const noexcept { return true; }
  /// Returns the line itself, for symmetry with TQLineSegment::infinite().
  [[nodiscard]] constexpr TQLine infinite() const noexcept { return *this; }

  /// Returns the point where both meet. Returns nullopt for parallel lines and for a line without
  /// direction. Both ends of a segment count.
  [[nodiscard]] std::optional<Point> intersection(const TQLine& with) const noexcept;
  [[nodiscard]] std::optional<Point> intersection(const TQLineSegment& with) const noexcept;
  /// Returns the part of the line inside the rect, from minY to maxY, or from minX to maxX if the
  /// line is horizontal. Returns nullopt where TQLineIntersectsRect() is false, and for the null
  /// rect. Unlike the result of TQLineSegmentInRect(), this one never leaves the rect; only
  /// end(), which is a sum, may do so by its rounding.
  [[nodiscard]] TQ_EXPORT std::optional<TQLineSegment> clipped(const Rect& to) const noexcept;
  /// Returns the foot of the perpendicular from the point.
  [[nodiscard]] TQ_EXPORT Point pointClosestTo(Point point) const noexcept;
  /// Returns the shortest distance, 0 or more. It is 0 for a rect that the line meets.
  [[nodiscard]] TQ_EXPORT double distance(Point from) const noexcept;
  [[nodiscard]] TQ_EXPORT double distance(const Rect& from) const noexcept;
  /// Returns whether `comparator` returns true for both coordinates of `through` and of the point
  /// closest to it.
  template <class Comparator>
  [[nodiscard]] bool passes(Point through, Comparator&& comparator) const {
    const Point closest = pointClosestTo(through);
    return comparator(closest.x, through.x) && comparator(closest.y, through.y);
  }
  /// The equation; see TQLineDescription().
  [[nodiscard]] std::string debugDescription() const;

  /// Compares the fields. Multiples of one equation differ.
  friend constexpr bool operator==(const TQLine&, const TQLine&) noexcept = default;
};

/// The points start + t·delta for t in [0, 1], both ends included.
struct TQLineSegment {
  /// The point for t = 0.
  Point start;
  /// The vector from the start to the end.
  Vector delta;

  [[nodiscard]] constexpr Point end() const noexcept {
    return {start.x + delta.dx, start.y + delta.dy};
  }
  /// Returns delta, not normalised.
  [[nodiscard]] constexpr Vector direction() const noexcept { return delta; }
  /// A segment ends.
  [[nodiscard]] constexpr bool isInfinite() const noexcept { return false; }

  /// Returns the line that contains the segment: (1, 0, x) if dx is 0, else (0, 1, y) if dy is 0,
  /// else (-dy, dx, y·dx - x·dy). A segment of length 0 counts as vertical.
  [[nodiscard]] TQ_EXPORT TQLine infinite() const noexcept;

  /// Returns the parameter t of `point` along the segment: 0 at the start, 1 at the end. It is the
  /// mean of the parameters on both axes, weighted by dx² and dy². It is NaN for a segment of
  /// length 0, and for one so short or long (about 1e-162 or 1e154) that its squared length is 0 or
  /// infinite.
  [[nodiscard]] TQ_EXPORT double parameterOf(Point point) const noexcept;

  /// Returns the point where both meet, ends included, or nullopt for parallels.
  [[nodiscard]] std::optional<Point> intersection(const TQLine& with) const noexcept;
  [[nodiscard]] std::optional<Point> intersection(const TQLineSegment& with) const noexcept;
  /// Returns the part of the segment inside the rect, in the segment's direction. If the segment
  /// only touches the border, the result has length 0. Returns nullopt if nothing is inside, and if
  /// the delta is infinite or NaN: the points of such a segment are unknown.
  [[nodiscard]] TQ_EXPORT std::optional<TQLineSegment> clipped(const Rect& to) const noexcept;
  /// Returns the nearest point of the segment. It is an end if the foot of the perpendicular lies
  /// outside.
  [[nodiscard]] TQ_EXPORT Point pointClosestTo(Point point) const noexcept;
  /// Returns the shortest distance, 0 or more. It is 0 for a rect that the segment meets.
  [[nodiscard]] TQ_EXPORT double distance(Point from) const noexcept;
  [[nodiscard]] TQ_EXPORT double distance(const Rect& from) const noexcept;
  /// Returns whether `comparator` returns true for both coordinates of `through` and of the point
  /// closest to it.
  template <class Comparator>
  [[nodiscard]] bool passes(Point through, Comparator&& comparator) const {
    const Point closest = pointClosestTo(through);
    return comparator(closest.x, through.x) && comparator(closest.y, through.y);
  }
  /// Returns "{x, y} -> {x, y}": start and end.
  [[nodiscard]] TQ_EXPORT std::string debugDescription() const;

  friend constexpr bool operator==(const TQLineSegment&, const TQLineSegment&) noexcept = default;
};
static_assert(std::is_trivially_copyable_v<TQLineSegment> && sizeof(TQLineSegment) == sizeof(Rect),
              "stored like a rect");

/// Returns the line's y at x, (c - a·x)/b, or NaN if b = 0. If a = 0, it is c/b for any x, even if
/// x is infinite or NaN.
[[nodiscard]] TQ_EXPORT double TQLineGetYForX(const TQLine& line, double x) noexcept;

/// Returns the line's x at y, (c - b·y)/a, or NaN if a = 0. The product is computed even if b = 0:
/// the x of a vertical line is NaN if y is infinite or NaN.
[[nodiscard]] TQ_EXPORT double TQLineGetXForY(const TQLine& line, double y) noexcept;

/// Returns the line's point with this x; see TQLineGetYForX() for its y.
[[nodiscard]] inline Point TQLineGetPointForX(const TQLine& line, double x) noexcept {
  return {x, TQLineGetYForX(line, x)};
}

/// Returns the line's point with this y; see TQLineGetXForY() for its x.
[[nodiscard]] inline Point TQLineGetPointForY(const TQLine& line, double y) noexcept {
  return {TQLineGetXForY(line, y), y};
}

/// Returns whether a, b and c each differ by less than 1e-9. Multiples of one equation are not
/// equal.
[[nodiscard]] TQ_EXPORT bool TQLineEqualToLine(const TQLine& l1, const TQLine& l2) noexcept;

/// Returns the dot product of the normals, each normalised to length 1. A normal shorter than 1e-9
/// is used unchanged.
[[nodiscard]] TQ_EXPORT double TQLineDotProduct(const TQLine& l1, const TQLine& l2) noexcept;

/// Returns arccos of TQLineDotProduct, in [0, π]. It is NaN where rounding makes that product
/// greater than 1 in magnitude, as for some parallel lines. TQLineSignedAngleBetween does not have
/// this problem.
[[nodiscard]] TQ_EXPORT double TQLineAngleBetween(const TQLine& l1, const TQLine& l2) noexcept;

/// Returns whether |TQLineDotProduct| <= 0.001.
[[nodiscard]] TQ_EXPORT bool TQLineIsPerpendicularToLine(const TQLine& l1,
                                                         const TQLine& l2) noexcept;

/// Returns whether |TQLineDotProduct - 1| <= 0.001. Compares only the directions of the normals: c
/// is ignored, and normals of opposite directions are not collinear.
[[nodiscard]] TQ_EXPORT bool TQLineIsCollinearWithLine(const TQLine& l1, const TQLine& l2) noexcept;

/// Returns whether both |b| <= 0.001, or else |a1/b1 - a2/b2| <= 0.001. The quotients are compared
/// even if one |b| is that small. If both quotients are infinite, the lines are not parallel.
[[nodiscard]] TQ_EXPORT bool TQLineIsParallelToLine(const TQLine& l1, const TQLine& l2) noexcept;

/// Returns atan2(a2, b2) - atan2(a1, b1), normalised to [-π, π].
[[nodiscard]] TQ_EXPORT double TQLineSignedAngleBetween(const TQLine& l1,
                                                        const TQLine& l2) noexcept;

/// Returns atan2(a, -b), in [-π, π]: the angle of the direction opposite to direction().
[[nodiscard]] TQ_EXPORT double TQLineSignedAngleFromXAxis(const TQLine& line) noexcept;

/// Returns the intersection of two lines, or TQLineNoIntersection if the determinant is exactly 0.
[[nodiscard]] TQ_EXPORT Point TQLineIntersection(const TQLine& l1, const TQLine& l2) noexcept;

/// Returns the intersection of a line and a segment, both ends included. Returns
/// TQLineNoIntersection if they are parallel or do not meet, and for a segment of length 0.
[[nodiscard]] TQ_EXPORT Point TQLineIntersectionWithSegment(const TQLine& line,
                                                            const TQLineSegment& segment) noexcept;

/// Returns the intersection of two segments, all ends included, or TQLineNoIntersection. Parallel
/// segments never meet, even if they overlap. Rounding may put the point beyond an end: segments
/// that meet at an end are found for certain only if they are parallel to the axes, or their
/// coordinates are small whole numbers.
[[nodiscard]] TQ_EXPORT Point TQLineSegmentIntersection(const TQLineSegment& s1,
                                                        const TQLineSegment& s2) noexcept;

/// Returns whether the line meets one of the rect's edges, ends included. The null rect is treated
/// as a rect at +infinity, which a rising line reaches.
[[nodiscard]] TQ_EXPORT bool TQLineIntersectsRect(const TQLine& line, const Rect& rect) noexcept;

/// Returns the part of the line inside the rect, from minY to maxY (from minX to maxX if the line
/// is horizontal). NaN if a = b = 0.
///
/// Use TQLine::clipped() instead, which has none of these limits: if the x of an end is outside the
/// rect, on either side, the start is put on minX and the end on maxX. This is correct for rising
/// lines only. For a falling line that crosses a side, and for a line that misses the rect, the
/// result leaves the rect.
[[nodiscard]] TQ_EXPORT TQLineSegment TQLineSegmentInRect(const TQLine& line,
                                                          const Rect& rect) noexcept;

/// Returns whether the segment has a point in the closed rect. A touch counts, but rounding may
/// miss the touch of a corner. False where a comparison with NaN decides.
/// Source: Liang and Barsky, A New Concept and Method for Line Clipping, ACM TOG 3 (1984).
[[nodiscard]] TQ_EXPORT bool TQLineSegmentIntersectsRect(const TQLineSegment& segment,
                                                         const Rect& rect) noexcept;

/// Returns a transform that moves the line onto the x axis: each of its points gets y = 0, within
/// rounding.
///
/// A line with |a| <= 1.1920928955078125e-07 counts as horizontal and is moved by -c/b; the ratio
/// of b to a is not considered. Any other line is rotated about its intersection with the x axis
/// until direction() points along +x.
[[nodiscard]] TQ_EXPORT AffineTransform TQLineTransformToXAxis(const TQLine& line) noexcept;

/// Returns the angle normalised to [0, 2π]: adds full turns while it is below 0, then subtracts
/// them while it is above 2π.
///
/// A negative angle too small to change 2π returns exactly 2π, and so does 2π itself. An angle of
/// more than TQNormalizeRadiansStepLimit turns is first reduced by one exact operation, because the
/// loop would be long or endless. An angle that is NaN or infinite stops the process.
[[nodiscard]] TQ_EXPORT double TQNormalizePolar(double angleRadians) noexcept;

/// Returns the angle from the ray vertex-p1 to the ray vertex-p3, as the difference of their
/// TQNormalizePolar angles. It is in (-2π, 2π), unless TQNormalizePolar rounds one of them to 2π.
/// Coordinates that make an angle NaN stop the process.
[[nodiscard]] TQ_EXPORT double LRAngleBetweenVectors(Point p1, Point vertex, Point p3) noexcept;

/// An alias of LRAngleBetweenVectors().
[[nodiscard]] inline double LRAngleBetweenPoints(Point p1, Point vertex, Point p3) noexcept {
  return LRAngleBetweenVectors(p1, vertex, p3);
}

/// Returns whether the corners are in clockwise order, if y grows upwards. Three points on one line
/// are not, unless rounding moves them off it.
[[nodiscard]] TQ_EXPORT bool LRTriangleIsClockwise(Point p1, Point p2, Point p3) noexcept;

/// Returns the point at `distance` from `point` in the direction `slopeRadians`.
[[nodiscard]] TQ_EXPORT Point TQPointAtDistanceAndSlopeFromPoint(double distance,
                                                                 double slopeRadians,
                                                                 Point point) noexcept;

/// Returns the index of the point nearest to `point`, the first of several equally near ones, or -1
/// if there is none. A point whose distance is NaN is ignored.
[[nodiscard]] TQ_EXPORT std::ptrdiff_t TQIndexOfPointClosestToPoint(std::span<const Point> points,
                                                                    Point point) noexcept;

/// Returns an equation: "y = 3", "2x - 1y = 0". Numbers are formatted as by NumberValue::text(). A
/// coefficient of -1 on y is printed.
[[nodiscard]] TQ_EXPORT std::string TQLineDescription(const TQLine& line);

namespace detail {
[[nodiscard]] constexpr std::optional<Point> asOptional(Point intersection) noexcept {
  return intersection == TQLineNoIntersection ? std::nullopt : std::optional(intersection);
}
}  // namespace detail

inline std::optional<Point> TQLine::intersection(const TQLine& with) const noexcept {
  return detail::asOptional(TQLineIntersection(*this, with));
}
inline std::optional<Point> TQLine::intersection(const TQLineSegment& with) const noexcept {
  return detail::asOptional(TQLineIntersectionWithSegment(*this, with));
}
inline std::optional<Point> TQLineSegment::intersection(const TQLine& with) const noexcept {
  return detail::asOptional(TQLineIntersectionWithSegment(with, *this));
}
inline std::optional<Point> TQLineSegment::intersection(const TQLineSegment& with) const noexcept {
  return detail::asOptional(TQLineSegmentIntersection(*this, with));
}
inline std::string TQLine::debugDescription() const { return TQLineDescription(*this); }

static_assert(Straight<TQLine> && Straight<TQLineSegment>);

}  // namespace tq
