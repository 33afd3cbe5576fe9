#pragma once

/// @file Axis.h
/// The two axes of the plane, sets of them, and the four edges of a rect.

namespace tq {

/// A direction of the plane. x grows to the right.
enum class Axis : int { horizontal = 0, vertical = 1 };

/// Any set of axes.
enum class AxisMask : unsigned { none = 0, horizontal = 1, vertical = 2, both = 3 };

/// An edge of a standardised rect, in this order.
enum class Edge : int { minX = 0, minY = 1, maxX = 2, maxY = 3 };

/// Returns the set that contains only this axis.
[[nodiscard]] constexpr AxisMask maskOf(Axis axis) noexcept {
  return axis == Axis::horizontal ? AxisMask::horizontal : AxisMask::vertical;
}

/// Returns the union of both sets.
[[nodiscard]] constexpr AxisMask operator|(AxisMask a, AxisMask b) noexcept {
  return static_cast<AxisMask>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// Returns true if the set contains the axis.
[[nodiscard]] constexpr bool contains(AxisMask mask, Axis axis) noexcept {
  return (static_cast<unsigned>(mask) & static_cast<unsigned>(maskOf(axis))) != 0;
}

}  // namespace tq
