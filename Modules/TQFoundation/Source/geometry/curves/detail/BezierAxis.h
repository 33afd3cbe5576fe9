#pragma once

/// @file BezierAxis.h
/// One coordinate of a Bézier segment, or both at once, as polynomials of degree N - 1 in Bernstein
/// form.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>
#include <TQFoundation/geometry/curves/TQPolynomial.h>

namespace tq::detail {

/// x and y of a point as a vector type of the compiler: one operation computes both.
using Pair = double __attribute__((vector_size(16)));

[[nodiscard]] inline double squareRoot(double v) noexcept { return std::sqrt(v); }
[[nodiscard]] inline Pair squareRoot(Pair v) noexcept {
  return Pair{std::sqrt(v[0]), std::sqrt(v[1])};
}

/// The coordinates of the control points; T is double or Pair.
template <std::size_t N, class T = double>
using BezierAxis = std::array<T, N>;

/// Calls `use` with the coordinates of the points in use minus `zero`. Returns `otherwise` for an
/// unknown degree.
template <class Result, class Use>
Result withBezierAxis(const TQBezierSegment& segment, Axis axis, double zero, Result otherwise,
                      Use&& use) {
  const auto at = [&](std::size_t i) {
    return (axis == Axis::horizontal ? segment.points[i].x : segment.points[i].y) - zero;
  };
  switch (segment.degree) {
    case TQBezierDegree::straight:
      return use(BezierAxis<2>{at(0), at(1)});
    case TQBezierDegree::quadratic:
      return use(BezierAxis<3>{at(0), at(1), at(2)});
    case TQBezierDegree::cubic:
      return use(BezierAxis<4>{at(0), at(1), at(2), at(3)});
  }
  return otherwise;
}

/// Returns both coordinates of the first N points.
template <std::size_t N>
[[nodiscard]] inline BezierAxis<N, Pair> bothAxes(const TQBezierSegment& segment) noexcept {
  BezierAxis<N, Pair> p;
  for (std::size_t i = 0; i < N; ++i) p[i] = Pair{segment.points[i].x, segment.points[i].y};
  return p;
}

/// Calls `use` with both coordinates of the points in use. Returns `otherwise` for an unknown
/// degree.
template <class Result, class Use>
Result withBothAxes(const TQBezierSegment& segment, Result otherwise, Use&& use) {
  switch (segment.degree) {
    case TQBezierDegree::straight:
      return use(bothAxes<2>(segment));
    case TQBezierDegree::quadratic:
      return use(bothAxes<3>(segment));
    case TQBezierDegree::cubic:
      return use(bothAxes<4>(segment));
  }
  return otherwise;
}

/// A closed interval. NaN if it is unknown.
struct Extent {
  double minimum = std::numeric_limits<double>::quiet_NaN();
  double maximum = std::numeric_limits<double>::quiet_NaN();

  void include(double value) noexcept {
    if (value < minimum) minimum = value;
    if (value > maximum) maximum = value;
  }
};

/// Returns the range of all control points, or NaN if one of them is NaN.
template <std::size_t N>
[[nodiscard]] inline Extent controlExtent(const BezierAxis<N>& p) noexcept {
  Extent extent{p[0], p[0]};
  for (const double value : p) {
    if (std::isnan(value)) return {};
    extent.include(value);
  }
  return extent;
}

template <class T>
struct BezierValue {
  T value;
  T derivative;
};

/// De Casteljau's algorithm. The last two intermediate points also determine the derivative.
template <std::size_t N, class T>
[[nodiscard]] inline BezierValue<T> evaluate(BezierAxis<N, T> p, T t) noexcept {
  const T s = 1.0 - t;
  for (std::size_t n = N - 1; n > 1; --n) {
    for (std::size_t i = 0; i < n; ++i) p[i] = s * p[i] + t * p[i + 1];
  }
  return {s * p[0] + t * p[1], static_cast<double>(N - 1) * (p[1] - p[0])};
}

[[nodiscard]] inline bool holdsAnywhere(bool comparison) noexcept { return comparison; }
[[nodiscard]] inline bool holdsAnywhere(decltype(Pair{} < Pair{}) comparison) noexcept {
  return (comparison[0] | comparison[1]) != 0;
}

template <class T>
[[nodiscard]] inline T magnitude(T v) noexcept {
  return v < T{} ? -v : v;
}

/// Clamps t to [0, 1]. NaN becomes 0.
template <class T>
[[nodiscard]] inline T clampedOffset(T t) noexcept {
  const T zero{};
  const T one = zero + 1.0;
  const T atLeast0 = t > zero ? t : zero;
  return atLeast0 < one ? atLeast0 : one;
}

/// Two offsets in [0, 1]. The coordinate is monotone between 0, the offsets and 1. If it has fewer
/// than two turning points, the other offsets are arbitrary, and evaluating them is harmless.
template <class T>
struct BezierTurns {
  T first;
  T second;
};

/// Applies TQSolveP2's formula, or the linear one, to the derivative. It computes both roots
/// without a branch, because on mixed curves the processor would mispredict half of the branches.
///
/// The formula loses the small root of a polynomial whose leading coefficient is tiny. An example
/// is a cubic that is a quadratic within rounding. Therefore a leading coefficient below 1e-8 of
/// the others is dropped. This moves the root by about 1e-8. Because the root is a turning point,
/// the coordinate there moves only by 1e-16 of its range.
template <std::size_t N, class T>
[[nodiscard]] inline BezierTurns<T> turns(const BezierAxis<N, T>& p) noexcept {
  const T zero{};
  if constexpr (N == 2) {
    return {zero, zero};
  } else {
    const T b = static_cast<double>(N - 2) * (p[0] - 2.0 * p[1] + p[2]);
    const T c = p[1] - p[0];
    if constexpr (N == 3) {
      const T linear = clampedOffset<T>(-c / b);
      return {linear, linear};
    } else {
      const T a = p[3] - p[0] + 3.0 * (p[1] - p[2]);
      const T B = b / a;
      const T discriminant = B * B - 4.0 * (c / a);
      const T root = squareRoot(discriminant > zero ? discriminant : zero);
      BezierTurns<T> turns{clampedOffset<T>((root + B) * -0.5), clampedOffset<T>((root - B) * 0.5)};
      const auto isLinear = magnitude(a) <= 1e-8 * (magnitude(b) + magnitude(c));
      if (holdsAnywhere(isLinear)) {
        const T linear = clampedOffset<T>(-c / b);
        turns = {isLinear ? linear : turns.first, isLinear ? linear : turns.second};
      }
      return turns;
    }
  }
}

}  // namespace tq::detail
