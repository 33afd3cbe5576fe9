#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <cmath>
#include <limits>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/geometry/curves/detail/BezierAxis.h>

namespace tq {
namespace {

/// Returns the root inside a monotone interval whose ends have different signs, never an end. Uses
/// Newton's method, and bisection wherever a step would leave the interval.
template <std::size_t N>
double rootBetween(const detail::BezierAxis<N>& p, double low, double high,
                   bool risesFromBelow) noexcept {
  constexpr int kSteps = 100;  // bisection alone needs 55
  const double start = low;
  double t = (low + high) / 2;
  for (int i = 0; i < kSteps; ++i) {
    const auto [value, derivative] = detail::evaluate<N, double>(p, t);
    if (value == 0) return t;
    ((value < 0) == risesFromBelow ? low : high) = t;
    double next = t - value / derivative;
    if (!(next > low && next < high)) next = (low + high) / 2;
    // No number is between them.
    if (!(next > low && next < high)) return low > start ? low : high;
    if (std::fabs(next - t) <= std::numeric_limits<double>::epsilon() / 2) return next;
    t = next;
  }
  return t;
}

/// Returns the offsets where the coordinate is 0, one monotone interval after the other.
///
/// The cubic formula is not applied to the coordinate itself: for the nearly quadratic cubics that
/// are frequent in drawings it cannot distinguish two roots from none. The turning points are
/// accurate enough, and the signs at the ends of each interval decide.
template <std::size_t N>
TQPolynomialRoots zeros(const detail::BezierAxis<N>& p) noexcept {
  const auto [least, most] = detail::controlExtent(p);
  if (!(least <= 0 && most >= 0) || least == most) return {};
  const double touch = 4 * std::numeric_limits<double>::epsilon() * (most - least);
  TQPolynomialRoots result;
  const auto report = [&result](double t) {
    TQ_ASSERT(result.count < 3);  // one for each monotone interval at most
    result.roots[result.count++] = t;
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
    if (value == 0 && there == 0)
      continue;  // one touch; rounding moved or doubled its turning point
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
