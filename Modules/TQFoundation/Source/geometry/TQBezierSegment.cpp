#include <TQFoundation/geometry/TQBezierSegment.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/geometry/VectorAlgebra.h>
#include <TQFoundation/geometry/detail/BezierAxis.h>
#include <TQFoundation/geometry/detail/BezierSplit.h>

namespace tq {
namespace {

using detail::Extent;

using detail::Pair;
Pair smaller(Pair a, Pair b) noexcept { return a < b ? a : b; }
Pair larger(Pair a, Pair b) noexcept { return a > b ? a : b; }

/// Extents are max - min, one unit in the last place more where min + extent would fall short of
/// max.
Rect rectOf(Pair minimum, Pair maximum) noexcept {
  const Pair extent = maximum - minimum;
  auto isShort = minimum + extent < maximum;  // -1 where it is
  const Pair reaching = std::bit_cast<Pair>(std::bit_cast<decltype(isShort)>(extent) - isShort);
  return {minimum[0], minimum[1], reaching[0], reaching[1]};
}

Rect controlPointBounds(const TQBezierSegment& segment) noexcept {
  const auto extent = [](const auto& p) { return detail::controlExtent(p); };
  const Extent x = detail::withBezierAxis(segment, Axis::horizontal, 0, Extent{}, extent);
  const Extent y = detail::withBezierAxis(segment, Axis::vertical, 0, Extent{}, extent);
  return rectOf(Pair{x.minimum, y.minimum}, Pair{x.maximum, y.maximum});
}

/// Range of the ends and of the turns. Controls between the ends, as in most pieces of a curve,
/// keep the curve between them too.
template <std::size_t N>
Rect tightBounds(const TQBezierSegment& segment) noexcept {
  detail::BezierAxis<N, Pair> p;
  for (std::size_t i = 0; i < N; ++i) p[i] = Pair{segment.points[i].x, segment.points[i].y};
  Pair minimum = smaller(p[0], p[N - 1]);
  Pair maximum = larger(p[0], p[N - 1]);
  Pair hullMinimum = minimum, hullMaximum = maximum, sum = p[0] + p[N - 1];
  for (std::size_t i = 1; i + 1 < N; ++i) {
    hullMinimum = smaller(hullMinimum, p[i]);
    hullMaximum = larger(hullMaximum, p[i]);
    sum += p[i];
  }
  // NaN and what would overflow on the way: the sums then are not what they should be.
  const Pair reach = 16.0 * (hullMaximum - hullMinimum) + 0.0 * sum;
  if (!(reach[0] + reach[1] <= std::numeric_limits<double>::max())) {
    return controlPointBounds(segment);
  }
  if (detail::holdsAnywhere((hullMinimum < minimum) | (hullMaximum > maximum))) {
    const auto [first, second] = detail::turns<N, Pair>(p);
    const Pair atFirst = detail::evaluate<N, Pair>(p, first).value;
    minimum = smaller(minimum, atFirst);
    maximum = larger(maximum, atFirst);
    if constexpr (N > 3) {
      const Pair atSecond = detail::evaluate<N, Pair>(p, second).value;
      minimum = smaller(minimum, atSecond);
      maximum = larger(maximum, atSecond);
    }
  }
  return rectOf(minimum, maximum);
}

double lengthSquared(Vector v) noexcept { return v.dx * v.dx + v.dy * v.dy; }

/// Length of the stretch [from, to] by the eight-point Gauss-Legendre rule.
double gaussLength(const TQBezierSegment& segment, double from, double to) noexcept {
  // Abramowitz and Stegun, Handbook of Mathematical Functions (1964), table 25.4, n = 8.
  constexpr std::array<std::array<double, 2>, 4> kNodes{{
      {0.183434642495649805, 0.362683783378361983},
      {0.525532409916328986, 0.313706645877887287},
      {0.796666477413626740, 0.222381034453374471},
      {0.960289856497536232, 0.101228536290376259},
  }};
  const double middle = (from + to) / 2;
  const double half = (to - from) / 2;
  const auto speed = [&](double t) {
    return std::sqrt(lengthSquared(TQBezierSegmentDerivative(segment, t)));
  };
  double sum = 0;
  for (const auto& [node, weight] : kNodes) {
    sum += weight * (speed(middle - half * node) + speed(middle + half * node));
  }
  return sum * half;
}

/// Halves until both halves together agree with the whole. A cusp, where the speed has a corner, is
/// what takes the depth; its share of the length there is below the tolerance.
double adaptiveLength(const TQBezierSegment& segment, double from, double to, double whole,
                      double tolerance, int depth) noexcept {
  const double middle = (from + to) / 2;
  const double left = gaussLength(segment, from, middle);
  const double right = gaussLength(segment, middle, to);
  if (depth == 0 || !(std::fabs(left + right - whole) > tolerance)) return left + right;
  return adaptiveLength(segment, from, middle, left, tolerance / 2, depth - 1) +
         adaptiveLength(segment, middle, to, right, tolerance / 2, depth - 1);
}

}  // namespace

Point TQBezierSegmentBezierWithPoints(double t, unsigned degree, const Point* points, Point* left,
                                      Point* right) noexcept {
  TQ_ASSERT(degree < 5);
  std::array<Point, 5> row{};
  std::copy_n(points, degree + 1, row.begin());
  for (unsigned level = 0;; ++level) {
    // Each row of the triangle starts with a point of the left half and ends with one of the right.
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
  return segment.used().empty() ? RectNull : controlPointBounds(segment);
}

Rect TQBezierSegmentGetBounds(const TQBezierSegment& segment) noexcept {
  switch (segment.degree) {
    case TQBezierDegree::straight:
      return tightBounds<2>(segment);
    case TQBezierDegree::quadratic:
      return tightBounds<3>(segment);
    case TQBezierDegree::cubic:
      return tightBounds<4>(segment);
  }
  return RectNull;
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
  if (points.size() == 2) return lengthSquared(points[1] - points[0]);
  double polygon = 0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    polygon += std::sqrt(lengthSquared(points[i] - points[i - 1]));
  }
  constexpr int kDepth = 16;
  const double length =
      adaptiveLength(segment, 0, 1, gaussLength(segment, 0, 1), 1e-10 * polygon, kDepth);
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
  const double length = std::hypot(chord.dx, chord.dy);
  AffineTransform turn;
  if (length > 0) {
    const double cosine = chord.dx / length;
    const double sine = chord.dy / length;
    turn = {cosine, -sine, sine, cosine, 0, 0};
  }
  return AffineTransformTranslate(turn, -segment.start().x, -segment.start().y);
}

TQPolynomialRoots TQBezierSegmentInflectionOffsets(const TQBezierSegment& segment) noexcept {
  if (segment.degree != TQBezierDegree::cubic) return {};
  // B(t) = a·t³ + 3·b·t² + 3·c·t + p0 has B' × B'' = 18·((a × b)·t² + (a × c)·t + (b × c)), up to
  // sign.
  const auto& [p0, p1, p2, p3] = segment.points;
  const Vector c = p1 - p0;
  const Vector leg = p2 - p1;
  const Vector b = leg - c;
  const Vector a = (p3 - p2) - leg - b;
  const TQPolynomial bend{0, VectorCrossProduct(a, b), VectorCrossProduct(a, c),
                          VectorCrossProduct(b, c)};
  // What is small beside the legs is rounding: a straight cubic bends nowhere.
  const double rounding = 1e-13 * TQBezierSegmentControlSplineLengthSquared(segment);
  const double largest = std::max({std::fabs(bend.b), std::fabs(bend.c), std::fabs(bend.d)});
  const TQPolynomial filtered =
      TQPolynomialHighPassFilter(std::max(rounding, 1e-8 * largest), bend);
  TQPolynomialRoots roots =
      TQPolynomialRootsSort(TQPolynomialRootsFilter(TQPolynomialFindRoots(filtered), 0, 1, 0));
  if (roots.count == 2 && roots.roots[0] == roots.roots[1]) roots = {{roots.roots[0], 0, 0}, 1};
  return roots;
}

}  // namespace tq
