#pragma once

/// @file TQBezierSegment.h
/// One Bézier segment of a path: straight, quadratic or cubic, as a plain value.
///
/// Offsets are the curve parameter t: 0 at the start, 1 at the end; any other t continues the
/// polynomial. Every function but the intersection enumerator is pure; none allocates, all may be
/// called on any thread. A segment whose degree code is unknown has no points: its bounds are the
/// null rect, points and derivatives of it are 0, and it meets nothing. NaN runs through. Nothing
/// that rounds is inline, so that no compiler flag of a caller can contract it.

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

/// How many points a segment has: 2, 3 or 4.
enum class TQBezierDegree : std::int32_t { straight = 0, quadratic = 1, cubic = 2 };

/// A straight line, a quadratic or a cubic curve from its first to its last point, for offsets t in
/// [0, 1]. Plain fields, which anybody may fill with an unknown degree; then it has no points.
struct TQBezierSegment {
  /// Start, controls, end; what the degree does not use is 0.
  Point points[4];
  /// How many of the points are in use.
  TQBezierDegree degree = TQBezierDegree::straight;

  /// The points in use: 2, 3, 4, or none for an unknown degree.
  [[nodiscard]] constexpr std::span<const Point> used() const& noexcept {
    const auto code = static_cast<std::uint32_t>(degree);
    return {points, code > 2 ? 0 : code + 2};
  }
  [[nodiscard]] std::span<const Point> used() const&& = delete;  // would dangle
  /// The first and the last point in use; (0, 0) as the end of an unknown degree.
  [[nodiscard]] constexpr Point start() const noexcept { return points[0]; }
  [[nodiscard]] constexpr Point end() const noexcept {
    return used().empty() ? Point{} : used().back();
  }

  /// The segment through these ends, shaped by these controls.
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

/// A Bézier curve of any degree below 5 at t, by repeated linear interpolation.
///
/// @param degree  4 at the most; more stops the process
/// @param points  degree + 1 control points
/// @param left, right  where to put the degree + 1 control points of each half; null to leave out.
///                     Either may be `points`.
TQ_EXPORT Point TQBezierSegmentBezierWithPoints(double t, unsigned degree, const Point* points,
                                                Point* left, Point* right) noexcept;

/// Splits at t, so that left.end() and right.start() are the same point to the last bit: de
/// Casteljau's for curves, start + t·(end - start) for a straight segment. Either half may be null,
/// or `segment` itself. Of an unknown degree both halves are copies of the segment.
TQ_EXPORT void TQBezierSegmentSplit(const TQBezierSegment& segment, double t, TQBezierSegment* left,
                                    TQBezierSegment* right) noexcept;

/// The point at t, bit for bit where TQBezierSegmentSplit cuts.
[[nodiscard]] TQ_EXPORT Point TQBezierSegmentPointAtOffset(const TQBezierSegment& segment,
                                                           double t) noexcept;

/// d(x, y)/dt at t; the same everywhere on a straight segment. 0 where a control point lies on its
/// end.
[[nodiscard]] TQ_EXPORT Vector TQBezierSegmentDerivative(const TQBezierSegment& segment,
                                                         double t) noexcept;

/// True when all its points are the same.
[[nodiscard]] TQ_EXPORT bool TQBezierSegmentIsPoint(const TQBezierSegment& segment) noexcept;

/// Bounds of the points in use; they hold the segment, but seldom closely.
[[nodiscard]] TQ_EXPORT Rect
TQBezierSegmentGetControlPointBounds(const TQBezierSegment& segment) noexcept;

/// Bounds of the segment itself. Its maxima read back as they are or up to one unit in the last
/// place of the extent above, never below.
///
/// Accuracy: each edge is touched within a few units in the last place of the largest coordinate.
/// Coordinates near the end of the range of double give the control points' bounds.
[[nodiscard]] TQ_EXPORT Rect TQBezierSegmentGetBounds(const TQBezierSegment& segment) noexcept;

/// How far from straight: with ux = (3·p1.x - 2·p0.x - p3.x)², vx = (3·p2.x - 2·p3.x - p0.x)², the
/// same for y, it is max(ux, vx) + max(uy, vy). The curve stays within √(flatness)/4 of its chord.
/// A quadratic has the flatness of the same curve written as a cubic, (2·p1 - p0 - p2)²; a straight
/// segment has 0.
[[nodiscard]] TQ_EXPORT double TQBezierSegmentFlatness(const TQBezierSegment& segment) noexcept;

/// Sum of the squared lengths of the control polygon's legs (not the square of their sum).
[[nodiscard]] TQ_EXPORT double TQBezierSegmentControlSplineLengthSquared(
    const TQBezierSegment& segment) noexcept;

/// The square of the arc length. Exact for a straight segment; for curves by adaptive
/// Gauss-Legendre quadrature between the offsets where the speed is least or greatest, the length
/// within 1e-9 of the control polygon's.
[[nodiscard]] TQ_EXPORT double TQBezierSegmentLengthSquared(
    const TQBezierSegment& segment) noexcept;

/// The segment with its points in use transformed.
[[nodiscard]] TQ_EXPORT TQBezierSegment TQBezierSegmentApplyAffineTransform(
    const TQBezierSegment& segment, const AffineTransform& transform) noexcept;

/// The move and turn that puts the start at (0, 0) and the end on the x axis, at or right of it. A
/// chord without length is moved only.
[[nodiscard]] TQ_EXPORT AffineTransform
TQBezierSegmentTransformForAligningToXAxis(const TQBezierSegment& segment) noexcept;

/// Offsets, ascending and strictly between 0 and 1, where a cubic's curvature changes its sign: 0,
/// 1 or 2 of them. A cusp is given once, and so is what rounding cannot tell from one. None for
/// other degrees and for a cubic that is straight. Source: the roots of B' × B''; Stone and DeRose,
/// A Geometric Characterization of Parametric Cubic Curves, ACM TOG 8 (1989).
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQBezierSegmentInflectionOffsets(const TQBezierSegment& segment) noexcept;

/// Offsets, ascending and in [0, 1], where the segment meets the line at height y. 0 and 1 are
/// given exactly when the end lies on the line, and a touch is given once. None for a segment that
/// lies in the line.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQBezierSegmentIntersectionsWithHorizontalLine(const TQBezierSegment& segment, double y) noexcept;

/// The same for the line at x.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQBezierSegmentIntersectionsWithVerticalLine(const TQBezierSegment& segment, double x) noexcept;

/// Takes the offsets on both segments of a point where they meet.
using TQBezierSegmentIntersectionCallback = std::function<void(double offsetA, double offsetB)>;

/// Enumerates the intersections of two segments by halving both until a piece is 2^-14 of its
/// segment.
///
/// Where pieces meet in a common end, its offsets are given as they are, so a shared end point is
/// reported exactly. Any other intersection is reported as the middles of two pieces that meet:
/// within 2^-15 of either offset where the segments cross at an angle of more than 1e-7, else
/// somewhere near (TQBezierSegmentRefineIntersection closes in on it).
///
/// Neighbouring pieces report one crossing several times, and where segments graze each other, they
/// meet on and off along the way. Reports that lie within 2^-8 of each other on both segments,
/// directly or through others between them, become one: the common end if there is one, else the
/// report whose points lie closest together. Crossings at an angle are told apart even then: each
/// is given unless another or a common end is as near as 2^-14. So a touch is one, and segments
/// that run along each other are reported by the first and the last common end of their pieces if
/// there are any (identical segments that do not fold back: their two ends), else at least once.
/// Intersections come in ascending order of `offsetA`, unless there are more than 64.
///
/// Work: at most 2^20 pairs of pieces are looked at. A crossing takes some 100 of them, identical
/// cubics some 2·10^5; a piece that has shrunk to a point is halved no further, so two points at
/// one place take a single one.
/// @return false when that limit cut the search short: some crossings may be missing
TQ_EXPORT bool TQBezierSegmentIntersections(const TQBezierSegment& a, const TQBezierSegment& b,
                                            const TQBezierSegmentIntersectionCallback& callback);

/// Offsets on two segments.
struct TQBezierSegmentOffsets {
  double a = 0;  ///< on the first segment, in [0, 1]
  double b = 0;  ///< on the second segment, in [0, 1]

  friend constexpr bool operator==(TQBezierSegmentOffsets,
                                   TQBezierSegmentOffsets) noexcept = default;
};

/// Newton's method from reported offsets towards the crossing, within [0, 1] on both. Never answers
/// with points further apart than the given ones; a touch is approached to half the digits.
[[nodiscard]] TQ_EXPORT TQBezierSegmentOffsets TQBezierSegmentRefineIntersection(
    const TQBezierSegment& a, const TQBezierSegment& b, TQBezierSegmentOffsets offsets) noexcept;

}  // namespace tq
