#pragma once

/// @file VectorAlgebra.h
/// Vectors of the plane: sums, products, lengths, angles and the polar form.
///
/// Angles are radians from the x axis towards the y axis. Nothing fails: NaN and infinities flow
/// through.

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Component by component, in plain floating-point arithmetic: overflow is infinite, division by 0
/// infinite or NaN.
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

/// From `b` to `a`.
[[nodiscard]] constexpr Vector operator-(Point a, Point b) noexcept {
  return {a.x - b.x, a.y - b.y};
}
/// The point moved by the vector, or back by it.
[[nodiscard]] constexpr Point operator+(Point p, Vector v) noexcept {
  return {p.x + v.dx, p.y + v.dy};
}
[[nodiscard]] constexpr Point operator-(Point p, Vector v) noexcept {
  return {p.x - v.dx, p.y - v.dy};
}

/// a.dx × b.dx + a.dy × b.dy: 0 for a right angle.
[[nodiscard]] TQ_EXPORT double VectorDotProduct(Vector a, Vector b) noexcept;

/// a.dx × b.dy - a.dy × b.dx: positive when `b` lies from `a` towards a quarter turn to +y.
[[nodiscard]] TQ_EXPORT double VectorCrossProduct(Vector a, Vector b) noexcept;

/// Neither overflows nor vanishes in between, as the root of the squares would.
[[nodiscard]] TQ_EXPORT double VectorGetLength(Vector v) noexcept;

/// The direction with length 1; the zero vector, having none, stays. Of any finite length.
[[nodiscard]] TQ_EXPORT Vector VectorNormalise(Vector v) noexcept;

/// A quarter turn from x towards y. Exact.
[[nodiscard]] constexpr Vector VectorGetPerpendicular(Vector v) noexcept { return {-v.dy, v.dx}; }

/// Turned from x towards y; the length stays, but for rounding.
[[nodiscard]] TQ_EXPORT Vector VectorRotate(Vector v, double angleRadians) noexcept;

/// The part of `v` along `onto`; the zero vector when `onto` is one.
[[nodiscard]] TQ_EXPORT Vector VectorProject(Vector v, Vector onto) noexcept;

/// How far to turn from `a` to `b`, the short way: in [-π, π], positive from x towards y. 0 when
/// one of them is the zero vector. By atan2 of cross and dot product, which keeps its digits near 0
/// and π, where the arc cosine of the dot product alone loses half.
[[nodiscard]] TQ_EXPORT double VectorAngleBetween(Vector a, Vector b) noexcept;

/// A vector by its length and direction.
struct PolarVector {
  double length = 0;        ///< 0 or more
  double angleRadians = 0;  ///< from the x axis towards the y axis
};

/// The angle is in [-π, π], 0 for the zero vector (by the signs of its zeros, as atan2 has it).
[[nodiscard]] TQ_EXPORT PolarVector PolarFromVector(Vector v) noexcept;

/// A negative length points the other way.
[[nodiscard]] TQ_EXPORT Vector VectorFromPolar(PolarVector polar) noexcept;

}  // namespace tq
