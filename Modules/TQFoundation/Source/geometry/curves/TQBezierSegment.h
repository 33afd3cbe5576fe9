#pragma once

/// @file TQBezierSegment.h
/// Bézier segments as plain values: straight, quadratic or cubic.
///
/// Offsets are the curve parameter t: 0 at the start, 1 at the end. Any other t continues the
/// polynomial. Every function but TQBezierSegmentIntersections is pure. None allocates, and all may
/// be called on any thread. A segment with an unknown degree has no points: its bounds are the null
/// rect, its points and derivatives are 0, and it meets nothing. NaN propagates. No function that
/// rounds is inline, so that a caller's compiler flags cannot fuse its operations.

#include <cstdint>
#include <functional>
#include <span>
#include <type_traits>

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/curves/TQPolynomial.h>

namespace tq {

/// The degree of a segment: 2, 3 or 4 points.
enum class TQBezierDegree : std::int32_t { straight = 0, quadratic = 1, cubic = 2 };

/// A straight line, a quadratic or a cubic curve from its first to its last point, for offsets t in
/// [0, 1]. The fields are plain; a segment whose degree is set to an unknown number has no points.
struct TQBezierSegment {
  /// The start, the control points, the end. The points that the degree does not use are 0.
  Point points[4];
  /// Determines how many of the points are in use.
  TQBezierDegree degree = TQBezierDegree::straight;

  /// Returns the points in use: 2, 3, 4, or none for an unknown degree.
  [[nodiscard]] constexpr std::span<const Point> used() const& noexcept {
    const auto code = static_cast<std::uint32_t>(degree);
    return {points, code > 2 ? 0 : code + 2};
  }
  [[nodiscard]] std::span<const Point> used() const&& = delete;  // would dangle
  /// The first and the last point in use. The end of a segment of unknown degree is (0, 0).
  [[nodiscard]] constexpr Point start() const noexcept { return points[0]; }
  [[nodiscard]] constexpr Point end() const noexcept {
    return used().empty() ? Point{} : used().back();
  }

  /// Return the segment with these ends and control points.
  [[nodiscard]] static constexpr TQBezierSegment straight(Point from, Point to) noexcept {
    return {{from, to, {}, {}}, TQBezierDegree::straight};
  }
  [[nodiscard]] static constexpr TQBezierSegment quadratic(Point from, Point control,
                                                           Point to) noexcept {
    return {{from, control, to, {}}, TQBezierDegree::quadratic};
  }
  [[nodiscard]] static constexpr TQBezierSegment cubic(Point from, Point control1, Point control2,
                                                       Point to) noexcept {
    return {{from, control1, control2, to}, TQBezierDegree::cubic};
  }

  friend constexpr bool operator==(const TQBezierSegment&,
                                   const TQBezierSegment&) noexcept = default;
};
static_assert(std::is_trivially_copyable_v<TQBezierSegment> && sizeof(TQBezierSegment) == 72,
              "four points, then a 32-bit code");

/// Evaluates a Bézier curve of degree 0 to 4 at t, by repeated linear interpolation.
///
/// @param degree  at most 4; a greater degree stops the process
/// @param points  degree + 1 control points
/// @param left, right  receive the degree + 1 control points of each half, or null. Either may be
///                     `points`.
TQ_EXPORT Point TQBezierSegmentBezierWithPoints(double t, unsigned degree, const Point* points,
                                                Point* left, Point* right) noexcept;

/// Splits a segment at t. left.end() and right.start() are the same point, bit for bit. Curves are
/// split by de Casteljau's algorithm, a straight segment at start + t·(end - start). Either half
/// may be null, or `segment` itself. For an unknown degree both halves are copies of the segment.
TQ_EXPORT void TQBezierSegmentSplit(const TQBezierSegment& segment, double t, TQBezierSegment* left,
                                    TQBezierSegment* right) noexcept;

/// Returns the point at t, bit for bit where TQBezierSegmentSplit splits.
[[nodiscard]] TQ_EXPORT Point TQBezierSegmentPointAtOffset(const TQBezierSegment& segment,
                                                           double t) noexcept;

/// Returns the derivative d(x, y)/dt at t. It is constant for a straight segment. At an end it is 0
/// if the next control point coincides with the end.
[[nodiscard]] TQ_EXPORT Vector TQBezierSegmentDerivative(const TQBezierSegment& segment,
                                                         double t) noexcept;

/// Returns whether all points in use are equal.
[[nodiscard]] TQ_EXPORT bool TQBezierSegmentIsPoint(const TQBezierSegment& segment) noexcept;

/// Returns the bounds of the points in use. They contain the segment, but are seldom tight. A
/// maximum, computed as origin + extent, is never below the greatest coordinate: the extent is
/// rounded up by one unit in the last place where necessary.
[[nodiscard]] TQ_EXPORT Rect
TQBezierSegmentGetControlPointBounds(const TQBezierSegment& segment) noexcept;

/// Returns the tight bounds of the segment, whose extents are never greater than those of the
/// bounds of the control points. They contain both ends; the extent is rounded up in the same way.
///
/// Accuracy: a turning point is rounded, so an edge there lies inside or outside of the true one by
/// a few units in the last place of the largest coordinate. Coordinates near the limits of double
/// return the bounds of the control points.
[[nodiscard]] TQ_EXPORT Rect TQBezierSegmentGetBounds(const TQBezierSegment& segment) noexcept;

/// Returns a measure of the deviation from a straight line: max(ux, vx) + max(uy, vy) with ux =
/// (3·p1.x - 2·p0.x - p3.x)², vx = (3·p2.x - 2·p3.x - p0.x)², and uy, vy the same for y. The curve
/// stays within √(flatness)/4 of its chord. A quadratic has the flatness of the same curve written
/// as a cubic, (2·p1 - p0 - p2)². A straight segment has 0.
[[nodiscard]] TQ_EXPORT double TQBezierSegmentFlatness(const TQBezierSegment& segment) noexcept;

/// Returns the sum of the squared lengths of the control polygon's sides (not the square of their
/// sum).
[[nodiscard]] TQ_EXPORT double TQBezierSegmentControlSplineLengthSquared(
    const TQBezierSegment& segment) noexcept;

/// Returns the square of the arc length.
///
/// Accuracy: exact for a straight segment. For curves, the length is within 1e-9 of the control
/// polygon's length. They use adaptive Gauss-Legendre quadrature between the offsets where the
/// speed has its extrema.
[[nodiscard]] TQ_EXPORT double TQBezierSegmentLengthSquared(
    const TQBezierSegment& segment) noexcept;

/// Returns the segment with the transform applied to its points in use.
[[nodiscard]] TQ_EXPORT TQBezierSegment TQBezierSegmentApplyAffineTransform(
    const TQBezierSegment& segment, const AffineTransform& transform) noexcept;

/// Returns the translation and rotation that move the start to (0, 0) and the end onto the x axis
/// within rounding, at x >= 0. If start and end are equal, there is only a translation. If their
/// difference overflows, the rotation is NaN.
[[nodiscard]] TQ_EXPORT AffineTransform
TQBezierSegmentTransformForAligningToXAxis(const TQBezierSegment& segment) noexcept;

/// Returns the offsets of a cubic's inflections, where its curvature changes sign: 0, 1 or 2 of
/// them, ascending and strictly between 0 and 1. A cusp is returned once, and so is what rounding
/// cannot distinguish from a cusp. Other degrees and straight cubics have none. The end of a curve
/// is no inflection, not even if its last two points are equal or its last three lie on a line
/// within rounding. The reversed curve has the mirrored offsets 1 - t, within 1e-15.
///
/// Source: the roots of B' × B''; Stone and DeRose, A Geometric Characterization of Parametric
/// Cubic Curves, ACM TOG 8 (1989).
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQBezierSegmentInflectionOffsets(const TQBezierSegment& segment) noexcept;

/// Returns the offsets where the segment meets the line at height y, ascending and in [0, 1]. 0 or
/// 1 is returned if and only if that end lies exactly on the line. A touch is returned once. A
/// segment that lies on the line returns none.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQBezierSegmentIntersectionsWithHorizontalLine(const TQBezierSegment& segment, double y) noexcept;

/// Like TQBezierSegmentIntersectionsWithHorizontalLine(), for the vertical line at x.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQBezierSegmentIntersectionsWithVerticalLine(const TQBezierSegment& segment, double x) noexcept;

/// Receives the offsets on both segments of a point where they meet.
using TQBezierSegmentIntersectionCallback = std::function<void(double offsetA, double offsetB)>;

/// Enumerates the intersections of two segments. Both are halved until a piece is 2^-14 of its
/// segment.
///
/// If two pieces meet in a common end, its offsets are reported exactly; so a shared end point of
/// the segments is exact. Any other intersection is reported as the middles of two pieces whose
/// bounds meet. If the segments cross at an angle of more than 1e-7 and one is at most 100 times as
/// long as the other, both offsets are within about 2^-15 of the true ones; otherwise they are less
/// accurate. Segments that pass each other within about 2^-14 of the longer one are reported, too;
/// nearly parallel ones sometimes in several places. TQBezierSegmentRefineIntersection improves
/// offsets; if the points of its result are still apart, it was such a miss.
///
/// Neighbouring pieces report one crossing several times, and segments that are nearly tangent meet
/// in many places. Therefore reports are merged. Two reports belong together if they are within
/// 2^-8 of each other on both segments, directly or through other reports; on a segment that is
/// less than 1/32 as long as the other, within two of the other's pieces. Each such group is
/// reported as its common end if it has one, else as the report whose points are closest together.
/// So a touch is reported once. Crossings at an angle are reported separately, unless another one
/// or a common end is within 2^-14. Up to 64 intersections are reported in ascending order of
/// `offsetA`; more are not sorted.
///
/// If the bounds of the segments do not intersect, only common ends are reported. Otherwise,
/// segments that run along each other are recognised before the search. Each overlap is reported by
/// its two ends. Identical cubics are reported by (0, 0) and (1, 1), and a cubic and its own piece
/// from 0 to 0.3 by (0, 0) and (0.3, 1). The end of a segment has exactly the offset 0 or 1; the
/// other offset is as accurate as the rounding of the points allows. A curve on a line that turns
/// back may overlap several times. The crossing of a loop with itself is reported, too. The control
/// points of both pieces, or their distances from a common line, must agree within 2^-48 of the
/// largest coordinate and within 2^-24 of the extent, over at least 2^-12 of both curves. What
/// agrees less is searched; then the first and the last common ends of its pieces are reported, or
/// at least one place if there are no common ends.
///
/// Work: at most 2^20 pairs of pieces are compared. A crossing takes about 100 pairs, an overlap
/// that is not recognised about 2·10^5. A piece that has shrunk to a point is not halved further,
/// so two points at one place take a single pair. If a coordinate is infinite or NaN, only common
/// ends of the segments are reported.
///
/// The callback may change or destroy both segments; they are copied. An exception that it throws
/// ends the search and reaches the caller.
/// @return false if that limit ended the search; then crossings may be missing
TQ_EXPORT bool TQBezierSegmentIntersections(const TQBezierSegment& a, const TQBezierSegment& b,
                                            const TQBezierSegmentIntersectionCallback& callback);

/// A pair of offsets on two segments.
struct TQBezierSegmentOffsets {
  double a = 0;  ///< on the first segment, in [0, 1]
  double b = 0;  ///< on the second segment, in [0, 1]

  friend constexpr bool operator==(TQBezierSegmentOffsets,
                                   TQBezierSegmentOffsets) noexcept = default;
};

/// Improves reported offsets, which must be in [0, 1], by Newton's method within [0, 1]. The points
/// of the result are never further apart than those of `offsets`. At a touch, about half of the
/// digits are correct.
[[nodiscard]] TQ_EXPORT TQBezierSegmentOffsets TQBezierSegmentRefineIntersection(
    const TQBezierSegment& a, const TQBezierSegment& b, TQBezierSegmentOffsets offsets) noexcept;

}  // namespace tq
