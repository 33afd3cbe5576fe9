#pragma once

/// @file TQLine.h
/// Infinite lines in implicit form, line segments, and how they meet each other and rects.
///
/// Every function is pure, may be called on any thread and, texts aside, allocates nothing. Angles
/// are in radians, from the x axis towards the y axis. None reports an error: NaN and infinity run
/// through the arithmetic unless said otherwise, and stop the process only in TQNormalizePolar.
/// What adds to a product is not inline, so that no compiler flag of a caller can contract it.

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

/// "No intersection": both coordinates the largest finite double.
inline constexpr Point TQLineNoIntersection{std::numeric_limits<double>::max(),
                                            std::numeric_limits<double>::max()};

/// The points with a·x + b·y = c. (a, b) is the normal: horizontal when a = 0, vertical when b = 0.
/// With a = b = 0 it has no direction: what is asked of it comes out NaN, infinite or none.
struct TQLine {
  /// Coefficients of the equation, as given: not normalised.
  double a = 0;
  double b = 0;
  double c = 0;

  /// (b, -a): the direction of the segment that the line was made from, unless that was vertical or
  /// horizontal; then it is (0, -1) or (1, 0).
  [[nodiscard]] constexpr Vector direction() const noexcept { return {b, -a}; }
  /// A line has no ends.
  [[nodiscard]] constexpr bool isInfinite() const noexcept { return true; }
  /// The line itself, as a segment answers the line that it lies on.
  [[nodiscard]] constexpr TQLine infinite() const noexcept { return *this; }

  /// Where both meet: none for parallels and for a line without direction; for a segment both of
  /// its ends count.
  [[nodiscard]] std::optional<Point> intersection(const TQLine& with) const noexcept;
  [[nodiscard]] std::optional<Point> intersection(const TQLineSegment& with) const noexcept;
  /// From minY to maxY, from minX to maxX when horizontal. Where TQLineIntersectsRect, but never
  /// for the null rect; unlike TQLineSegmentInRect it does not leave the rect.
  [[nodiscard]] TQ_EXPORT std::optional<TQLineSegment> clipped(const Rect& to) const noexcept;
  /// The foot of the perpendicular from the point.
  [[nodiscard]] TQ_EXPORT Point pointClosestTo(Point point) const noexcept;
  /// Perpendicular to the line, 0 or more; to a rect the shortest, 0 where they meet.
  [[nodiscard]] TQ_EXPORT double distance(Point from) const noexcept;
  [[nodiscard]] TQ_EXPORT double distance(const Rect& from) const noexcept;
  /// True when `comparator` takes both coordinates of the point, and of the closest point to it,
  /// for equal.
  template <class Comparator>
  [[nodiscard]] bool passes(Point through, Comparator&& comparator) const {
    const Point closest = pointClosestTo(through);
    return comparator(closest.x, through.x) && comparator(closest.y, through.y);
  }
  /// The equation; see TQLineDescription().
  [[nodiscard]] std::string debugDescription() const;

  /// By value of the fields; multiples of one equation differ.
  friend constexpr bool operator==(const TQLine&, const TQLine&) noexcept = default;
};

/// The points start + t·delta for t in [0, 1], both ends included.
struct TQLineSegment {
  /// Where t is 0.
  Point start;
  /// From the start to the end.
  Vector delta;

  [[nodiscard]] constexpr Point end() const noexcept {
    return {start.x + delta.dx, start.y + delta.dy};
  }
  /// delta, not normalised.
  [[nodiscard]] constexpr Vector direction() const noexcept { return delta; }
  /// A segment ends.
  [[nodiscard]] constexpr bool isInfinite() const noexcept { return false; }

  /// (1, 0, x) without dx, else (0, 1, y) without dy, else (-dy, dx, y·dx - x·dy). A segment that
  /// is a point counts as vertical.
  [[nodiscard]] TQ_EXPORT TQLine infinite() const noexcept;

  /// Where `point` lies along the segment, 0 at the start, 1 at the end: the mean of the shares on
  /// both axes, weighted by their parts of the squared length. NaN for a segment that is a point,
  /// and for one so short or long (about 1e-162, 1e154) that its square is 0 or infinite.
  [[nodiscard]] TQ_EXPORT double parameterOf(Point point) const noexcept;

  /// Where both meet, ends included; none for parallels.
  [[nodiscard]] std::optional<Point> intersection(const TQLine& with) const noexcept;
  [[nodiscard]] std::optional<Point> intersection(const TQLineSegment& with) const noexcept;
  /// In the segment's own direction; of a segment that only touches the border, a segment that is a
  /// point.
  [[nodiscard]] TQ_EXPORT std::optional<TQLineSegment> clipped(const Rect& to) const noexcept;
  /// The nearest point of the segment, an end where the perpendicular misses it.
  [[nodiscard]] TQ_EXPORT Point pointClosestTo(Point point) const noexcept;
  /// The shortest distance, 0 or more; to a rect 0 where they meet.
  [[nodiscard]] TQ_EXPORT double distance(Point from) const noexcept;
  [[nodiscard]] TQ_EXPORT double distance(const Rect& from) const noexcept;
  /// True when `comparator` takes both coordinates of the point, and of the closest point to it,
  /// for equal.
  template <class Comparator>
  [[nodiscard]] bool passes(Point through, Comparator&& comparator) const {
    const Point closest = pointClosestTo(through);
    return comparator(closest.x, through.x) && comparator(closest.y, through.y);
  }
  /// "{x, y} -> {x, y}", start and end
  [[nodiscard]] TQ_EXPORT std::string debugDescription() const;

  friend constexpr bool operator==(const TQLineSegment&, const TQLineSegment&) noexcept = default;
};
static_assert(std::is_trivially_copyable_v<TQLineSegment> && sizeof(TQLineSegment) == sizeof(Rect),
              "stored like a rect");

/// The line's y at x; NaN when b = 0.
[[nodiscard]] TQ_EXPORT double TQLineGetYForX(const TQLine& line, double x) noexcept;

/// The line's x at y; NaN when a = 0.
[[nodiscard]] TQ_EXPORT double TQLineGetXForY(const TQLine& line, double y) noexcept;

/// The line's point with this coordinate; NaN on the other one as above.
[[nodiscard]] inline Point TQLineGetPointForX(const TQLine& line, double x) noexcept {
  return {x, TQLineGetYForX(line, x)};
}

/// The line's point with this y; its x is NaN as above.
[[nodiscard]] inline Point TQLineGetPointForY(const TQLine& line, double y) noexcept {
  return {TQLineGetXForY(line, y), y};
}

/// a, b and c each differ by less than 1e-9. Multiples of one equation are not equal.
[[nodiscard]] TQ_EXPORT bool TQLineEqualToLine(const TQLine& l1, const TQLine& l2) noexcept;

/// Dot product of the normals, each brought to length 1; one shorter than 1e-9 is taken as it is.
[[nodiscard]] TQ_EXPORT double TQLineDotProduct(const TQLine& l1, const TQLine& l2) noexcept;

/// arccos of TQLineDotProduct: 0...π. NaN where rounding takes that product beyond ±1, as it does
/// for some parallel lines; TQLineSignedAngleBetween has no such gap.
[[nodiscard]] TQ_EXPORT double TQLineAngleBetween(const TQLine& l1, const TQLine& l2) noexcept;

/// |TQLineDotProduct| <= 0.001
[[nodiscard]] TQ_EXPORT bool TQLineIsPerpendicularToLine(const TQLine& l1,
                                                         const TQLine& l2) noexcept;

/// |TQLineDotProduct - 1| <= 0.001. Compares the directions of the normals alone: c does not count,
/// and normals that point in opposite directions are not collinear.
[[nodiscard]] TQ_EXPORT bool TQLineIsCollinearWithLine(const TQLine& l1, const TQLine& l2) noexcept;

/// Both |b| <= 0.001, or else |a1/b1 - a2/b2| <= 0.001. With only one b that small the quotients
/// are compared all the same; where they are both infinite, the lines are not parallel.
[[nodiscard]] TQ_EXPORT bool TQLineIsParallelToLine(const TQLine& l1, const TQLine& l2) noexcept;

/// atan2(a2, b2) - atan2(a1, b1), in [-π, π].
[[nodiscard]] TQ_EXPORT double TQLineSignedAngleBetween(const TQLine& l1,
                                                        const TQLine& l2) noexcept;

/// atan2(a, -b), in [-π, π]: the angle of the direction opposite to direction().
[[nodiscard]] TQ_EXPORT double TQLineSignedAngleFromXAxis(const TQLine& line) noexcept;

/// TQLineNoIntersection when the determinant is exactly 0.
[[nodiscard]] TQ_EXPORT Point TQLineIntersection(const TQLine& l1, const TQLine& l2) noexcept;

/// TQLineNoIntersection also where the lines meet outside the segment. A segment that is a point
/// meets nothing.
[[nodiscard]] TQ_EXPORT Point TQLineIntersectionWithSegment(const TQLine& line,
                                                            const TQLineSegment& segment) noexcept;

/// Both ends of both segments included. Parallel segments never meet, even where they overlap.
[[nodiscard]] TQ_EXPORT Point TQLineSegmentIntersection(const TQLineSegment& s1,
                                                        const TQLineSegment& s2) noexcept;

/// Whether the line meets one of the rect's edges, ends included. The null rect is taken as it
/// stands, at +infinity, where a rising line ends up too.
[[nodiscard]] TQ_EXPORT bool TQLineIntersectsRect(const TQLine& line, const Rect& rect) noexcept;

/// The line's part inside the rect, from minY to maxY (from minX to maxX when it is horizontal).
///
/// An end whose x lies beside the rect, on either side, is put on minX (the start) or maxX (the
/// end) instead. So only rising lines stay within: a falling one that passes a side is given the
/// wrong end point and leaves the rect, as does a line that misses it. TQLine::clipped has neither
/// fault. NaN when a = b = 0.
[[nodiscard]] TQ_EXPORT TQLineSegment TQLineSegmentInRect(const TQLine& line,
                                                          const Rect& rect) noexcept;

/// Whether the segment has a point in the closed rect; a mere touch counts, but rounding may take
/// one of a corner for a miss. False where NaN decides. Source: Liang and Barsky, A New Concept and
/// Method for Line Clipping, ACM TOG 3 (1984).
[[nodiscard]] TQ_EXPORT bool TQLineSegmentIntersectsRect(const TQLineSegment& segment,
                                                         const Rect& rect) noexcept;

/// Moves the line onto the x axis: each of its points comes to y = 0 within rounding.
///
/// A line with |a| <= 1.1920928955078125e-07 counts as horizontal and is moved by -c/b; how far b
/// stands above a is not looked at. Any other turns around the point where it meets the x axis,
/// which stays, until direction() points along +x.
[[nodiscard]] TQ_EXPORT AffineTransform TQLineTransformToXAxis(const TQLine& line) noexcept;

/// Adds full turns while below 0, then takes them off while above 2π: [0, 2π].
///
/// A negative angle too small to change 2π gives exactly 2π, and so does 2π itself. An angle of
/// more than TQNormalizeRadiansStepLimit turns is first reduced exactly, for it would be a long
/// way, or an endless one. An angle that is NaN or infinite stops the process.
[[nodiscard]] TQ_EXPORT double TQNormalizePolar(double angleRadians) noexcept;

/// From the ray vertex-p1 to the ray vertex-p3, as the difference of their TQNormalizePolar angles:
/// in (-2π, 2π), but for an angle that TQNormalizePolar rounds to 2π. NaN and infinite coordinates
/// that make an angle NaN stop the process.
[[nodiscard]] TQ_EXPORT double LRAngleBetweenVectors(Point p1, Point vertex, Point p3) noexcept;

/// The same under its older name.
[[nodiscard]] inline double LRAngleBetweenPoints(Point p1, Point vertex, Point p3) noexcept {
  return LRAngleBetweenVectors(p1, vertex, p3);
}

/// Whether the corners run clockwise with y up. Three on one line do not, unless rounding moves
/// them off it.
[[nodiscard]] TQ_EXPORT bool LRTriangleIsClockwise(Point p1, Point p2, Point p3) noexcept;

/// The point at `distance` from `point` in the direction `slopeRadians`.
[[nodiscard]] TQ_EXPORT Point TQPointAtDistanceAndSlopeFromPoint(double distance,
                                                                 double slopeRadians,
                                                                 Point point) noexcept;

/// Index of the point nearest to `point`, the first of several equally near; -1 when there is none.
/// A point whose distance is NaN never is.
[[nodiscard]] TQ_EXPORT std::ptrdiff_t TQIndexOfPointClosestToPoint(std::span<const Point> points,
                                                                    Point point) noexcept;

/// An equation: "y = 3", "2x - 1y = 0". Numbers as NumberValue::text() prints them; a coefficient
/// of -1 on y is printed.
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
