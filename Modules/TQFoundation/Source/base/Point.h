#pragma once

/// @file Point.h
/// Points, sizes and vectors of the plane: two doubles each, in the caller's unit.

#include <type_traits>

namespace tq {

/// A position. The direction of y is the caller's choice; functions that depend on it document it.
struct Point {
  /// Coordinates in the caller's unit. NaN and infinities are stored unchanged.
  double x = 0;
  double y = 0;

  /// Compares the fields: +0 equals -0, NaN equals nothing.
  friend constexpr bool operator==(Point, Point) noexcept = default;
};

/// An extent on each axis. Extents are negative in rects that have not been standardised.
struct Size {
  /// In the caller's unit; either may be negative, infinite or NaN.
  double width = 0;
  double height = 0;

  friend constexpr bool operator==(Size, Size) noexcept = default;
};

/// A direction with a length: the difference of two points.
struct Vector {
  /// Components in the caller's unit.
  double dx = 0;
  double dy = 0;

  friend constexpr bool operator==(Vector, Vector) noexcept = default;
};

static_assert(std::is_trivially_copyable_v<Point> && sizeof(Point) == 16, "boxed by its bytes");
static_assert(std::is_trivially_copyable_v<Size> && sizeof(Size) == 16, "boxed by its bytes");

}  // namespace tq
