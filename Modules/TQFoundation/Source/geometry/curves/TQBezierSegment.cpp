#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/geometry/curves/detail/BezierAxis.h>
#include <TQFoundation/geometry/curves/detail/BezierBounds.h>
#include <TQFoundation/geometry/curves/detail/BezierSplit.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>

namespace tq {
namespace {

Rect rectOf(const detail::BezierBounds& bounds) noexcept {
  return {bounds.origin[0], bounds.origin[1], bounds.extent[0], bounds.extent[1]};
}

double lengthSquared(Vector v) noexcept { return v.dx * v.dx + v.dy * v.dy; }

/// The derivative of a curve, a·t² + 2·b·t + c. The second derivative is 2·(a·t + b).
struct Velocity {
  Vector a;
  Vector b;
  Vector c;

  [[nodiscard]] double speed(double t) const noexcept {
    return std::sqrt(lengthSquared((a * t + 2 * b) * t + c));
  }
};

Velocity velocityOf(const TQBezierSegment& curve) noexcept {
  const auto& [p0, p1, p2, p3] = curve.points;
  const Vector c = p1 - p0;
  const Vector leg = p2 - p1;
  const Vector b = leg - c;
  if (curve.degree == TQBezierDegree::quadratic) return {{}, b, 2 * c};
  return {3 * ((p3 - p2) - leg - b), 3 * b, 3 * c};
}

/// Replaces leading coefficients by 0 if they are tiny compared with the others. With them, the
/// closed forms lose the roots in [0, 1]; without them, these roots move by about 1e-8.
TQPolynomial withoutTinyLead(TQPolynomial p) noexcept {
  const double tiny =
      1e-8 * std::max({std::fabs(p.a), std::fabs(p.b), std::fabs(p.c), std::fabs(p.d)});
  for (double* const lead : {&p.a, &p.b, &p.c}) {
    if (!(std::fabs(*lead) <= tiny)) break;  // NaN is kept
    *lead = 0;
  }
  return p;
}

TQPolynomialRoots rootsInside(const TQPolynomial& p) noexcept {
  return TQPolynomialRootsSort(
      TQPolynomialRootsFilter(TQPolynomialFindRoots(withoutTinyLead(p)), 0, 1, 0));
}

/// The offsets where the speed has its extrema: the roots of B' · B''.
TQPolynomialRoots speedTurns(const Velocity& velocity) noexcept {
  const auto& [a, b, c] = velocity;
  return rootsInside({VectorDotProduct(a, a), 3 * VectorDotProduct(a, b),
                      2 * VectorDotProduct(b, b) + VectorDotProduct(a, c), VectorDotProduct(b, c)});
}

/// The length between two offsets by the eight-point Gauss-Legendre rule.
double gaussLength(const Velocity& velocity, double from, double to) noexcept {
  // Abramowitz and Stegun, Handbook of Mathematical Functions (1964), table 25.4, n = 8.
  constexpr std::array<std::array<double, 2>, 4> kNodes{{
      {0.183434642495649805, 0.362683783378361983},
      {0.525532409916328986, 0.313706645877887287},
      {0.796666477413626740, 0.222381034453374471},
      {0.960289856497536232, 0.101228536290376259},
  }};
  const double middle = (from + to) / 2;
  const double half = (to - from) / 2;
  double sum = 0;
  for (const auto& [node, weight] : kNodes) {
    sum += weight * (velocity.speed(middle - half * node) + velocity.speed(middle + half * node));
  }
  return sum * half;
}

/// Halves the interval until both halves together agree with the whole. The speed must be monotone
/// in the interval: otherwise a corner could be between the nodes of the whole and of both halves.
double adaptiveLength(const Velocity& velocity, double from, double to, double whole,
                      double tolerance, int depth) noexcept {
  const double middle = (from + to) / 2;
  const double left = gaussLength(velocity, from, middle);
  const double right = gaussLength(velocity, middle, to);
  if (depth == 0 || !(std::fabs(left + right - whole) > tolerance)) return left + right;
  return adaptiveLength(velocity, from, middle, left, tolerance / 2, depth - 1) +
         adaptiveLength(velocity, middle, to, right, tolerance / 2, depth - 1);
}

/// The bend B' × B'' of a cubic, scaled so that the largest coefficient is 1 or -1: p·s² + q·s·t +
/// r·t² with s = 1 - t. It is computed from the legs d of the control polygon: p = d0 × d1, q = d0
/// × d2, r = d1 × d2. Reversing the curve swaps p and r and changes all signs, without any
/// rounding. And a bend of 0 at an end is exact: there p or r is 0. In powers of t, a rounding
/// error of the coefficients moves a double root at 1 to about 1 - 1e-8.
struct Bend {
  double p = 0;
  double q = 0;
  double r = 0;
  double rounding = 0;  ///< of the discriminant q² - 4·p·r of a cusp
};

/// Returns the bend, or 0 for a straight cubic and if a coordinate is NaN or infinite.
Bend bendOf(const TQBezierSegment& cubic) noexcept {
  const auto& points = cubic.points;
  double reach = 0;
  for (const Point point : points) {
    reach = std::max({reach, std::fabs(point.x), std::fabs(point.y)});
  }
  std::array<Vector, 3> leg;
  std::array<double, 3> length;
  for (std::size_t i = 0; i < 3; ++i) {
    leg[i] = points[i + 1] - points[i];
    length[i] = std::fabs(leg[i].dx) + std::fabs(leg[i].dy);
  }
  // Returns 0 for legs that are parallel within the rounding of the points and of the product.
  const auto product = [&](std::size_t i, std::size_t k) {
    const double bend = VectorCrossProduct(leg[i], leg[k]);
    const double noise = 4 * std::numeric_limits<double>::epsilon() * reach;
    return std::fabs(bend) <= noise * (length[i] + length[k]) ? 0 : bend;
  };
  const double p = product(0, 1);
  const double q = product(0, 2);
  const double r = product(1, 2);
  // Values that are small compared with the control polygon are rounding errors.
  const double largest = std::max({std::fabs(p), std::fabs(q), std::fabs(r)});
  if (!(largest > 1e-12 * TQBezierSegmentControlSplineLengthSquared(cubic))) return {};
  // A cubic that misses a cusp by so little is treated as having one. Each coefficient has the
  // error of its two legs, so that a short leg does not hide turns near its end.
  const auto error = [&](std::size_t i, std::size_t k) { return length[i] * length[k] / largest; };
  Bend bend{p / largest, q / largest, r / largest};
  bend.rounding = 1e-12 * (std::fabs(bend.q) * error(0, 2) + std::fabs(bend.p) * error(1, 2) +
                           std::fabs(bend.r) * error(0, 1));
  return bend;
}

/// Returns the offsets t of the points (s : t) with s + t = 1, ascending, if s and t are positive
/// after rounding. 2^-53 is the distance of 1 to the next smaller number.
TQPolynomialRoots offsetsInside(std::initializer_list<std::array<double, 2>> ratios) noexcept {
  constexpr double kLeast = std::numeric_limits<double>::epsilon() / 2;
  TQPolynomialRoots offsets;
  for (const auto& [s, t] : ratios) {
    const double offset = t / (s + t);
    if (s * t > 0 && offset >= kLeast && offset < 1) offsets.roots[offsets.count++] = offset;
  }
  return TQPolynomialRootsSort(offsets);
}

}  // namespace

Point TQBezierSegmentBezierWithPoints(double t, unsigned degree, const Point* points, Point* left,
                                      Point* right) noexcept {
  TQ_ASSERT(degree < 5);
  std::array<Point, 5> row{};
  std::copy_n(points, degree + 1, row.begin());
  for (unsigned level = 0;; ++level) {
    // Each row of the triangle starts with a point of the left half and ends with one of the right
    // half.
    if (left != nullptr) left[level] = row[0];
    if (right != nullptr) right[degree - level] = row[degree - level];
    if (level == degree) return row[0];
    for (unsigned i = 0; i < degree - level; ++i) row[i] = detail::between(row[i], row[i + 1], t);
  }
}

void TQBezierSegmentSplit(const TQBezierSegment& segment, double t, TQBezierSegment* left,
                          TQBezierSegment* right) noexcept {
  detail::split(segment, t, left, right);
}

Point TQBezierSegmentPointAtOffset(const TQBezierSegment& segment, double t) noexcept {
  if (segment.used().empty()) return {};
  TQBezierSegment right;
  detail::split(segment, t, nullptr, &right);
  return right.start();
}

Vector TQBezierSegmentDerivative(const TQBezierSegment& segment, double t) noexcept {
  const auto derivative = [t](const auto& p) {
    return detail::evaluate<std::tuple_size_v<std::decay_t<decltype(p)>>, double>(p, t).derivative;
  };
  return {detail::withBezierAxis(segment, Axis::horizontal, 0, 0.0, derivative),
          detail::withBezierAxis(segment, Axis::vertical, 0, 0.0, derivative)};
}

bool TQBezierSegmentIsPoint(const TQBezierSegment& segment) noexcept {
  const auto points = segment.used();
  return !points.empty() &&
         std::all_of(points.begin(), points.end(), [&](Point point) { return point == points[0]; });
}

Rect TQBezierSegmentGetControlPointBounds(const TQBezierSegment& segment) noexcept {
  return detail::withBothAxes(segment, RectNull,
                              [](const auto& p) { return rectOf(detail::controlBounds(p)); });
}

Rect TQBezierSegmentGetBounds(const TQBezierSegment& segment) noexcept {
  return detail::withBothAxes(segment, RectNull,
                              [](const auto& p) { return rectOf(detail::tightBounds(p)); });
}

double TQBezierSegmentFlatness(const TQBezierSegment& segment) noexcept {
  const auto& [p0, p1, p2, p3] = segment.points;
  if (segment.degree == TQBezierDegree::quadratic) {
    return lengthSquared({2 * p1.x - p0.x - p2.x, 2 * p1.y - p0.y - p2.y});
  }
  if (segment.degree != TQBezierDegree::cubic) return 0;
  const auto square = [](double v) { return v * v; };
  const double ux = square(3 * p1.x - 2 * p0.x - p3.x);
  const double uy = square(3 * p1.y - 2 * p0.y - p3.y);
  const double vx = square(3 * p2.x - 2 * p3.x - p0.x);
  const double vy = square(3 * p2.y - 2 * p3.y - p0.y);
  return std::max(ux, vx) + std::max(uy, vy);
}

double TQBezierSegmentControlSplineLengthSquared(const TQBezierSegment& segment) noexcept {
  const auto points = segment.used();
  double sum = 0;
  for (std::size_t i = 1; i < points.size(); ++i) sum += lengthSquared(points[i] - points[i - 1]);
  return sum;
}

double TQBezierSegmentLengthSquared(const TQBezierSegment& segment) noexcept {
  const auto points = segment.used();
  if (points.empty()) return 0;
  if (points.size() == 2) return lengthSquared(points[1] - points[0]);
  double polygon = 0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    polygon += std::sqrt(lengthSquared(points[i] - points[i - 1]));
  }
  // The whole and its halves can agree by accident, so the tolerance is far below the documented
  // accuracy.
  const double tolerance = 1e-12 * polygon;
  constexpr int kDepth = 16;
  const Velocity velocity = velocityOf(segment);
  double length = 0;
  double from = 0;
  const auto goTo = [&](double to) {
    const double whole = gaussLength(velocity, from, to);
    length += adaptiveLength(velocity, from, to, whole, tolerance, kDepth);
    from = to;
  };
  for (const double turn : speedTurns(velocity)) goTo(turn);
  goTo(1);
  return length * length;
}

TQBezierSegment TQBezierSegmentApplyAffineTransform(const TQBezierSegment& segment,
                                                    const AffineTransform& transform) noexcept {
  TQBezierSegment result = segment;
  for (std::size_t i = 0; i < segment.used().size(); ++i) {
    result.points[i] = PointApplyAffineTransform(segment.points[i], transform);
  }
  return result;
}

AffineTransform TQBezierSegmentTransformForAligningToXAxis(
    const TQBezierSegment& segment) noexcept {
  const Vector chord = segment.end() - segment.start();
  AffineTransform turn;
  if (chord != Vector{}) {
    const auto [cosine, sine] = VectorNormalise(chord);
    turn = {cosine, -sine, sine, cosine, 0, 0};
  }
  return AffineTransformTranslate(turn, -segment.start().x, -segment.start().y);
}

TQPolynomialRoots TQBezierSegmentInflectionOffsets(const TQBezierSegment& segment) noexcept {
  if (segment.degree != TQBezierDegree::cubic) return {};
  const auto [p, q, r, rounding] = bendOf(segment);
  const double discriminant = q * q - 4 * p * r;
  if (p * r > 0 && p * q < 0 && std::fabs(discriminant) <= rounding) {
    return offsetsInside({{2 * r - q, 2 * p - q}});  // the mean of (2·r : -q) and (-q : 2·p)
  }
  if (!(discriminant >= 0)) return {};
  // The sum of q and the root never cancels.
  const double sum = (q + std::copysign(std::sqrt(discriminant), q)) / -2;
  return offsetsInside({{r, sum}, {sum, p}});
}

}  // namespace tq
