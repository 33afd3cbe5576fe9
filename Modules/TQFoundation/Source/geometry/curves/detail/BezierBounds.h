#pragma once

/// @file BezierBounds.h
/// Tight bounds of Bézier curves, inline for the library's own loops.

#include <bit>
#include <cstddef>
#include <limits>

#include <TQFoundation/geometry/curves/detail/BezierAxis.h>

namespace tq::detail {

[[nodiscard]] inline Pair smaller(Pair a, Pair b) noexcept { return a < b ? a : b; }
[[nodiscard]] inline Pair larger(Pair a, Pair b) noexcept { return a > b ? a : b; }

/// The least and the greatest coordinates, stored as a rect stores them: origin and extent.
struct BezierBounds {
  Pair origin;
  Pair extent;

  /// The extents are max - min. Where min + extent would be below max, the extent is one unit in
  /// the last place greater.
  [[nodiscard]] static BezierBounds between(Pair minimum, Pair maximum) noexcept {
    const Pair extent = maximum - minimum;
    auto isShort = minimum + extent < maximum;  // -1 where true
    return {minimum, std::bit_cast<Pair>(std::bit_cast<decltype(isShort)>(extent) - isShort)};
  }
};

/// Returns the bounds of the control points. They are NaN on an axis on which a point is NaN.
template <std::size_t N>
[[nodiscard]] BezierBounds controlBounds(const BezierAxis<N, Pair>& p) noexcept {
  const auto extentOn = [&](std::size_t axis) {
    BezierAxis<N> coordinates;
    for (std::size_t i = 0; i < N; ++i) coordinates[i] = p[i][axis];
    return controlExtent(coordinates);
  };
  const Extent x = extentOn(0);
  const Extent y = extentOn(1);
  return BezierBounds::between(Pair{x.minimum, y.minimum}, Pair{x.maximum, y.maximum});
}

/// Returns whether no coordinate is infinite or NaN.
template <std::size_t N>
[[nodiscard]] inline bool isFinite(const BezierAxis<N, Pair>& p) noexcept {
  Pair sum{};
  for (const Pair point : p) sum += 0.0 * point;
  return sum[0] + sum[1] == 0;
}

/// Returns whether tightBounds() can compute with the coordinates: all are finite, and no
/// intermediate result overflows. The same then holds for every piece of the curve.
template <std::size_t N>
[[nodiscard]] inline bool isOrdinary(const BezierAxis<N, Pair>& p) noexcept {
  Pair minimum = p[0], maximum = p[0], sum{};
  for (const Pair point : p) {
    minimum = smaller(minimum, point);
    maximum = larger(maximum, point);
    sum += point;
  }
  const Pair reach = 16.0 * (maximum - minimum) + 0.0 * sum;  // NaN if a coordinate is NaN
  return reach[0] + reach[1] <= std::numeric_limits<double>::max();
}

/// Returns the bounds of the ends and the turning points. If the control points lie between the
/// ends, as in most pieces of a curve, the curve lies between the ends too.
/// @param noise  the rounding error of a turning point, 0 or more. The bounds are wider by it, but
///               not wider than those of the control points.
template <std::size_t N>
[[nodiscard]] inline BezierBounds ordinaryBounds(const BezierAxis<N, Pair>& p,
                                                 Pair noise) noexcept {
  Pair minimum = smaller(p[0], p[N - 1]);
  Pair maximum = larger(p[0], p[N - 1]);
  Pair hullMinimum = minimum, hullMaximum = maximum;
  for (std::size_t i = 1; i + 1 < N; ++i) {
    hullMinimum = smaller(hullMinimum, p[i]);
    hullMaximum = larger(hullMaximum, p[i]);
  }
  if (holdsAnywhere((hullMinimum < minimum) | (hullMaximum > maximum))) {
    const auto [first, second] = turns<N, Pair>(p);
    const auto include = [&](Pair turn) {
      minimum = smaller(minimum, larger(turn - noise, hullMinimum));
      maximum = larger(maximum, smaller(turn + noise, hullMaximum));
    };
    include(evaluate<N, Pair>(p, first).value);
    if constexpr (N > 3) include(evaluate<N, Pair>(p, second).value);
  }
  return BezierBounds::between(minimum, maximum);
}

/// Returns the tight bounds, or those of the control points if the numbers are not ordinary.
template <std::size_t N>
[[nodiscard]] inline BezierBounds tightBounds(const BezierAxis<N, Pair>& p) noexcept {
  return isOrdinary(p) ? ordinaryBounds(p, Pair{}) : controlBounds(p);
}

}  // namespace tq::detail
