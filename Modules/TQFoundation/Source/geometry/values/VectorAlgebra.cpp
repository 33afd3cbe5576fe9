#include <TQFoundation/geometry/values/VectorAlgebra.h>

#include <cmath>

namespace tq {
namespace {

// Scales the greater component to about 1 by a power of two. This is exact, and the squares of the
// result do not overflow.
Vector scaledNearOne(Vector v) noexcept {
  const double greatest = std::fmax(std::fabs(v.dx), std::fabs(v.dy));
  if (greatest == 0 || !std::isfinite(greatest)) return v;
  const int exponent = -std::ilogb(greatest);
  return {std::scalbn(v.dx, exponent), std::scalbn(v.dy, exponent)};
}

}  // namespace

double VectorDotProduct(Vector a, Vector b) noexcept { return a.dx * b.dx + a.dy * b.dy; }

double VectorCrossProduct(Vector a, Vector b) noexcept { return a.dx * b.dy - a.dy * b.dx; }

double VectorGetLength(Vector v) noexcept { return std::hypot(v.dx, v.dy); }

Vector VectorNormalise(Vector v) noexcept {
  const Vector near = scaledNearOne(v);
  const double length = VectorGetLength(near);
  return length == 0 ? v : near / length;
}

Vector VectorRotate(Vector v, double angleRadians) noexcept {
  const double sine = std::sin(angleRadians);
  const double cosine = std::cos(angleRadians);
  return {v.dx * cosine - v.dy * sine, v.dx * sine + v.dy * cosine};
}

Vector VectorProject(Vector v, Vector onto) noexcept {
  const Vector direction = VectorNormalise(onto);
  return direction * VectorDotProduct(v, direction);
}

double VectorAngleBetween(Vector a, Vector b) noexcept {
  const Vector one = scaledNearOne(a);
  const Vector other = scaledNearOne(b);
  return std::atan2(VectorCrossProduct(one, other), VectorDotProduct(one, other) + 0.0);  // not -0
}

PolarVector PolarFromVector(Vector v) noexcept {
  return {VectorGetLength(v), std::atan2(v.dy, v.dx)};
}

Vector VectorFromPolar(PolarVector polar) noexcept {
  return {polar.length * std::cos(polar.angleRadians), polar.length * std::sin(polar.angleRadians)};
}

}  // namespace tq
