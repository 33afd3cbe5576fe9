#pragma once

/// @file VectorAlgebra.h
/// Vector algebra in the plane: sums, products, lengths, angles, polar form.
///
/// Angles are in radians, from the x axis towards the y axis. No function reports an error: NaN and
/// infinities propagate.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Component by component, in plain floating-point arithmetic. Overflow is infinite; division by 0
/// is infinite or NaN.
[[nodiscard]] constexpr Vector operator+(Vector a, Vector b) noexcept {
  return {a.dx + b.dx, a.dy + b.dy};
}
[[nodiscard]] constexpr Vector operator-(Vector a, Vector b) noexcept {
  return {a.dx - b.dx, a.dy - b.dy};
}
[[nodiscard]] constexpr Vector operator-(Vector v) noexcept { return {-v.dx, -v.dy}; }
[[nodiscard]] constexpr Vector operator*(Vector v, double factor) noexcept {
  return {v.dx * factor, v.dy * factor};
}
[[nodiscard]] constexpr Vector operator*(double factor, Vector v) noexcept { return v * factor; }
[[nodiscard]] constexpr Vector operator/(Vector v, double divisor) noexcept {
  return {v.dx / divisor, v.dy / divisor};
}

/// Returns the vector from `b` to `a`.
[[nodiscard]] constexpr Vector operator-(Point a, Point b) noexcept {
  return {a.x - b.x, a.y - b.y};
}
/// Returns the point moved by the vector, or by its opposite.
[[nodiscard]] constexpr Point operator+(Point p, Vector v) noexcept {
  return {p.x + v.dx, p.y + v.dy};
}
[[nodiscard]] constexpr Point operator-(Point p, Vector v) noexcept {
  return {p.x - v.dx, p.y - v.dy};
}

/// Returns a.dx × b.dx + a.dy × b.dy. It is 0 for a right angle.
[[nodiscard]] TQ_EXPORT double VectorDotProduct(Vector a, Vector b) noexcept;

/// Returns a.dx × b.dy - a.dy × b.dx. It is positive if turning from `a` to `b` by less than half a
/// turn goes from x towards y.
[[nodiscard]] TQ_EXPORT double VectorCrossProduct(Vector a, Vector b) noexcept;

/// Returns the Euclidean length. Unlike √(dx² + dy²), it does not overflow or become 0 through the
/// squares.
[[nodiscard]] TQ_EXPORT double VectorGetLength(Vector v) noexcept;

/// Returns the vector of length 1 in the same direction, for any finite length. The zero vector is
/// returned unchanged.
[[nodiscard]] TQ_EXPORT Vector VectorNormalise(Vector v) noexcept;

/// Returns the vector turned by a quarter turn from x towards y. Exact.
[[nodiscard]] constexpr Vector VectorGetPerpendicular(Vector v) noexcept { return {-v.dy, v.dx}; }

/// Returns the vector turned from x towards y. The length is kept, within rounding.
[[nodiscard]] TQ_EXPORT Vector VectorRotate(Vector v, double angleRadians) noexcept;

/// Returns the projection of `v` onto the direction of `onto`, or the zero vector if `onto` is the
/// zero vector.
[[nodiscard]] TQ_EXPORT Vector VectorProject(Vector v, Vector onto) noexcept;

/// Returns the angle from `a` to `b`, in [-π, π]; positive from x towards y. It is 0 if one of them
/// is the zero vector.
///
/// Accuracy: computed as atan2 of cross and dot product, which stays accurate near 0 and π. There
/// the arc cosine of the dot product loses half of the digits.
[[nodiscard]] TQ_EXPORT double VectorAngleBetween(Vector a, Vector b) noexcept;

/// A vector in polar form.
struct PolarVector {
  double length = 0;        ///< 0 or more
  double angleRadians = 0;  ///< from the x axis towards the y axis
};

/// Returns the polar form. The angle is in [-π, π]. For the zero vector it is the one that atan2
/// returns for the signs of its zeros: 0 for (+0, +0).
[[nodiscard]] TQ_EXPORT PolarVector PolarFromVector(Vector v) noexcept;

/// Returns the vector of a polar form. A negative length gives the opposite direction.
[[nodiscard]] TQ_EXPORT Vector VectorFromPolar(PolarVector polar) noexcept;

}  // namespace tq
