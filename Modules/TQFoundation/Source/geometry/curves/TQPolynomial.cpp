#include <TQFoundation/geometry/curves/TQPolynomial.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include <TQFoundation/objects/Number.h>

namespace tq {
namespace {

constexpr double kHalfRootOfThree = 0.8660254037844386;
constexpr double kThirdOfATurn = 2.0943951023931953;

/// Returns one real root, or a simple and a double one. A and B are Cardano's two cube roots.
TQPolynomialRoots rootsBesideAPair(double a, double Q, double R) noexcept {
  double A = std::cbrt(std::sqrt(R * R - Q * Q * Q) + std::fabs(R));
  if (R >= 0) A = -A;
  const double B = A == 0 ? 0 : Q / A;
  const double simple = (A + B) - a / 3;
  const double pairReal = -(A + B) / 2 - a / 3;
  const double pairImaginary = (A - B) * kHalfRootOfThree;
  if (std::fabs(pairImaginary) < std::numeric_limits<double>::epsilon()) {
    return {{simple, pairReal, 0}, 2};
  }
  return {{simple, 0, 0}, 1};
}

TQPolynomialRoots solveP2(double b, double c) noexcept {
  const double discriminant = b * b - 4 * c;
  if (!(discriminant >= 0)) return {};
  const double root = std::sqrt(discriminant);
  return {{(root - b) / 2, -(root + b) / 2, 0}, 2};
}

TQPolynomialRoots solveP3(double a, double b, double c) noexcept {
  const double Q = (a * a - 3 * b) / 9;
  const double R = (2 * a * a * a - 9 * a * b + 27 * c) / 54;
  if (Q * Q * Q <= R * R) return rootsBesideAPair(a, Q, R);
  const double theta = std::acos(std::clamp(R / (std::fabs(Q) * std::sqrt(Q)), -1.0, 1.0));
  const double m = -2 * std::sqrt(Q);
  return {{m * std::cos(theta / 3) - a / 3, m * std::cos(theta / 3 + kThirdOfATurn) - a / 3,
           m * std::cos(theta / 3 - kThirdOfATurn) - a / 3},
          3};
}

}  // namespace

double TQPolynomialEvalulate(const TQPolynomial& p, double t) noexcept {
  return t * (t * t * p.a + p.c) + t * t * p.b + p.d;
}

TQPolynomialRoots TQSolveP2(double b, double c) noexcept { return solveP2(b, c); }

TQPolynomialRoots TQSolveP3(double a, double b, double c) noexcept { return solveP3(a, b, c); }

TQPolynomialRoots TQPolynomialFindRoots(const TQPolynomial& p) noexcept {
  if (p.a != 0) {
    const double inverse = 1 / p.a;
    return solveP3(p.b * inverse, p.c * inverse, p.d * inverse);
  }
  if (p.b != 0) {
    const double inverse = 1 / p.b;
    return solveP2(p.c * inverse, p.d * inverse);
  }
  if (p.c != 0) return {{-p.d / p.c, 0, 0}, 1};
  return {};
}

Ref<Set> TQPolynomialRootsMakeSet(const TQPolynomialRoots& roots) {
  Ref<Object> members[3];
  std::size_t count = 0;
  for (const double root : roots) members[count++] = Number::numberWith(root);
  return Set::setWithObjects(std::span<const Ref<Object>>(members, count));
}

}  // namespace tq
