#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <cmath>
#include <limits>

#include <TQFoundation/geometry/curves/detail/BezierAxis.h>

namespace tq {
namespace {

/// The root of a monotone stretch at whose ends the signs differ: Newton's method, and the middle
/// of what is left wherever that would leave it.
template <std::size_t N>
double rootBetween(const detail::BezierAxis<N>& p, double low, double high,
                   bool risesFromBelow) noexcept {
  constexpr int kSteps = 100;  // halvings alone need 55
  double t = (low + high) / 2;
  for (int i = 0; i < kSteps; ++i) {
    const auto [value, derivative] = detail::evaluate<N, double>(p, t);
    if (value == 0) return t;
    ((value < 0) == risesFromBelow ? low : high) = t;
    double next = t - value / derivative;
    if (!(next > low && next < high)) next = (low + high) / 2;
    if (std::fabs(next - t) <= std::numeric_limits<double>::epsilon() / 2) return next;
    t = next;
  }
  return t;
}

/// Where the coordinate is 0, one monotone stretch after the other.
///
/// The cubic formula is not used on the coordinate itself: for the nearly quadratic cubics that
/// drawings are full of it cannot tell two roots from none. The turning points are found to the
/// accuracy that counts, and between them the signs at the ends tell.
template <std::size_t N>
TQPolynomialRoots zeros(const detail::BezierAxis<N>& p) noexcept {
  const auto [least, most] = detail::controlExtent(p);
  if (!(least <= 0 && most >= 0) || least == most) return {};
  const double touch = 4 * std::numeric_limits<double>::epsilon() * (most - least);
  TQPolynomialRoots result;
  const auto report = [&result](double t) {
    if (result.count < 3) result.roots[result.count++] = t;
  };
  const auto step = [&](double from, double fromValue, double to, double toValue) {
    if (fromValue == 0) report(from);
    if ((fromValue < 0 && toValue > 0) || (fromValue > 0 && toValue < 0)) {
      report(rootBetween(p, from, to, fromValue < 0));
    }
  };
  double at = 0;
  double value = p[0];
  const auto [firstTurn, secondTurn] = detail::turns<N, double>(p);
  for (const double t : {firstTurn, secondTurn}) {
    if (!(t > at && t < 1)) continue;
    double there = detail::evaluate<N, double>(p, t).value;
    if (std::fabs(there) <= touch) there = 0;
    if (value == 0 && there == 0) continue;  // one touch, whose turn rounding has moved or doubled
    step(at, value, t, there);
    at = t;
    value = there;
  }
  const bool endsInTouch = at > 0 && value == 0 && p[N - 1] == 0;
  if (!endsInTouch) step(at, value, 1, p[N - 1]);
  if (p[N - 1] == 0) report(1);
  return result;
}

TQPolynomialRoots intersectionsWithLine(const TQBezierSegment& segment, Axis axis,
                                        double position) noexcept {
  return detail::withBezierAxis(segment, axis, position, TQPolynomialRoots{},
                                [](const auto& p) { return zeros(p); });
}

}  // namespace

TQPolynomialRoots TQBezierSegmentIntersectionsWithHorizontalLine(const TQBezierSegment& segment,
                                                                 double y) noexcept {
  return intersectionsWithLine(segment, Axis::vertical, y);
}

TQPolynomialRoots TQBezierSegmentIntersectionsWithVerticalLine(const TQBezierSegment& segment,
                                                               double x) noexcept {
  return intersectionsWithLine(segment, Axis::horizontal, x);
}

}  // namespace tq
