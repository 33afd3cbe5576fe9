#pragma once

/// @file TQOrthogonalLine.h
/// Lines parallel to an axis, such as guides, grid lines and edges of rects.

#include <cmath>
#include <optional>
#include <string>

#include <TQFoundation/base/Axis.h>
#include <TQFoundation/geometry/lines/TQLine.h>

namespace tq {

/// The line parallel to `axis` whose coordinate on the other axis is `position`. An unknown axis
/// counts as vertical.
struct TQOrthogonalLine {
  /// The axis that it is parallel to.
  Axis axis = Axis::horizontal;
  double position = 0;  ///< the y of a horizontal line, the x of a vertical one

  /// False for an unknown axis.
  [[nodiscard]] constexpr bool isHorizontal() const noexcept { return axis == Axis::horizontal; }

  /// Returns the direction of increasing coordinates.
  [[nodiscard]] constexpr Vector direction() const noexcept {
    return isHorizontal() ? Vector{1, 0} : Vector{0, 1};
  }
  /// A line has no ends.
  [[nodiscard]] constexpr bool isInfinite() const noexcept { return true; }
  /// Returns the same line in implicit form.
  [[nodiscard]] constexpr TQLine infinite() const noexcept {
    return isHorizontal() ? TQLine{0, 1, position} : TQLine{1, 0, position};
  }
  /// Converts implicitly, so that it can be used as a TQLine.
  constexpr operator TQLine() const noexcept { return infinite(); }  // NOLINT

  /// Returns infinite().intersection(with).
  [[nodiscard]] std::optional<Point> intersection(const TQLine& with) const noexcept {
    return infinite().intersection(with);
  }
  [[nodiscard]] std::optional<Point> intersection(const TQLineSegment& with) const noexcept {
    return infinite().intersection(with);
  }
  /// Returns infinite().clipped(to).
  [[nodiscard]] std::optional<TQLineSegment> clipped(const Rect& to) const noexcept {
    return infinite().clipped(to);
  }
  /// Returns the foot of the perpendicular. NaN stays NaN.
  [[nodiscard]] constexpr Point pointClosestTo(Point point) const noexcept {
    return isHorizontal() ? Point{point.x, position} : Point{position, point.y};
  }
  /// Returns the shortest distance, 0 or more.
  [[nodiscard]] double distance(Point from) const noexcept {
    return std::fabs((isHorizontal() ? from.y : from.x) - position);
  }
  [[nodiscard]] double distance(const Rect& from) const noexcept {
    return infinite().distance(from);
  }
  /// Returns whether `comparator` returns true for the line's position and the point's coordinate
  /// on that axis.
  template <class Comparator>
  [[nodiscard]] bool passes(Point through, Comparator&& comparator) const {
    return comparator(position, isHorizontal() ? through.y : through.x);
  }
  /// Returns the same text as for the TQLine.
  [[nodiscard]] std::string debugDescription() const { return TQLineDescription(infinite()); }

  friend constexpr bool operator==(TQOrthogonalLine, TQOrthogonalLine) noexcept = default;
};

static_assert(Straight<TQOrthogonalLine>);

}  // namespace tq
