#pragma once

/// @file TQOrthogonalLine.h
/// Lines parallel to an axis: guides, grid lines, edges of rects.

#include <cmath>
#include <optional>
#include <string>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/geometry/lines/TQLine.h>

namespace tq {

/// The line parallel to `axis` whose coordinate on the other axis is `position`. Any axis but the
/// horizontal one is taken for the vertical.
struct TQOrthogonalLine {
  /// Which axis it is parallel to.
  Axis axis = Axis::horizontal;
  double position = 0;  ///< its y when it is horizontal, its x when it is vertical

  /// False for an unknown axis.
  [[nodiscard]] constexpr bool isHorizontal() const noexcept { return axis == Axis::horizontal; }

  /// Towards the greater coordinates.
  [[nodiscard]] constexpr Vector direction() const noexcept {
    return isHorizontal() ? Vector{1, 0} : Vector{0, 1};
  }
  /// A line has no ends.
  [[nodiscard]] constexpr bool isInfinite() const noexcept { return true; }
  /// The same line by its equation.
  [[nodiscard]] constexpr TQLine infinite() const noexcept {
    return isHorizontal() ? TQLine{0, 1, position} : TQLine{1, 0, position};
  }
  /// So that it can stand wherever a line is asked for.
  constexpr operator TQLine() const noexcept { return infinite(); }  // NOLINT

  /// As of the TQLine: infinite().intersection(with).
  [[nodiscard]] std::optional<Point> intersection(const TQLine& with) const noexcept {
    return infinite().intersection(with);
  }
  [[nodiscard]] std::optional<Point> intersection(const TQLineSegment& with) const noexcept {
    return infinite().intersection(with);
  }
  /// As of the TQLine, within `to`.
  [[nodiscard]] std::optional<TQLineSegment> clipped(const Rect& to) const noexcept {
    return infinite().clipped(to);
  }
  /// The foot of the perpendicular; NaN stays NaN.
  [[nodiscard]] constexpr Point pointClosestTo(Point point) const noexcept {
    return isHorizontal() ? Point{point.x, position} : Point{position, point.y};
  }
  /// Perpendicular to the line, 0 or more; to a rect the shortest.
  [[nodiscard]] double distance(Point from) const noexcept {
    return std::fabs((isHorizontal() ? from.y : from.x) - position);
  }
  [[nodiscard]] double distance(const Rect& from) const noexcept {
    return infinite().distance(from);
  }
  /// True when `comparator` takes the line's position and the point's coordinate on that axis for
  /// equal.
  template <class Comparator>
  [[nodiscard]] bool passes(Point through, Comparator&& comparator) const {
    return comparator(position, isHorizontal() ? through.y : through.x);
  }
  /// As of the TQLine.
  [[nodiscard]] std::string debugDescription() const { return TQLineDescription(infinite()); }

  friend constexpr bool operator==(TQOrthogonalLine, TQOrthogonalLine) noexcept = default;
};

static_assert(Straight<TQOrthogonalLine>);

}  // namespace tq
