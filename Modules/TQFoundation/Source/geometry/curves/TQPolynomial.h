#pragma once

/// @file TQPolynomial.h
/// Polynomials up to degree three, and their real roots in closed form.
///
/// Every function is pure and may be called on any thread. None allocates unless its comment says
/// so. NaN propagates. A root that is lost to NaN or overflow is returned as NaN or infinity, or
/// not at all; TQPolynomialRootsFilter drops NaN and infinity. A function that adds to a product is
/// not inline, so that a caller's compiler flags cannot fuse the two operations.

#include <cstdint>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Set.h>

namespace tq {

/// The polynomial a·t³ + b·t² + c·t + d.
struct TQPolynomial {
  /// The coefficients, highest power first. Leading ones may be 0.
  double a = 0;
  double b = 0;
  double c = 0;
  double d = 0;

  friend constexpr bool operator==(const TQPolynomial&, const TQPolynomial&) noexcept = default;
};

/// Up to three real numbers. The first `count` are in use; the others are 0. A range-based for loop
/// visits those in use. If the count is outside 0...3, no number is in use.
struct TQPolynomialRoots {
  double roots[3] = {0, 0, 0};  ///< the first `count` are in use
  std::int32_t count = 0;       ///< 0...3

  [[nodiscard]] constexpr const double* begin() const noexcept { return roots; }
  [[nodiscard]] constexpr const double* end() const noexcept {
    return roots + (count < 0 || count > 3 ? 0 : count);
  }

  friend constexpr bool operator==(const TQPolynomialRoots&,
                                   const TQPolynomialRoots&) noexcept = default;
};
static_assert(std::is_trivially_copyable_v<TQPolynomialRoots>, "passed by value");

/// Returns the polynomial with these coefficients.
[[nodiscard]] constexpr TQPolynomial TQPolynomialMake(double a, double b, double c,
                                                      double d) noexcept {
  return {a, b, c, d};
}

/// Returns the value at t, computed as t·(t²·a + c) + t²·b + d.
[[nodiscard]] TQ_EXPORT double TQPolynomialEvalulate(const TQPolynomial& polynomial,
                                                     double t) noexcept;

/// Replaces each coefficient whose magnitude is below `threshold` by 0. A coefficient equal to it
/// is kept, and so is NaN.
[[nodiscard]] constexpr TQPolynomial TQPolynomialHighPassFilter(double threshold,
                                                                const TQPolynomial& p) noexcept {
  const auto pass = [threshold](double v) { return (v < 0 ? -v : v) < threshold ? 0 : v; };
  return {pass(p.a), pass(p.b), pass(p.c), pass(p.d)};
}

/// Finds the real roots of t² + b·t + c.
///
/// @return two roots, the larger first (a double root is listed twice), or none
/// Accuracy: that of the closed form. If |b| is far above |c|, the root near 0 loses digits.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots TQSolveP2(double b, double c) noexcept;

/// Finds the real roots of t³ + a·t² + b·t + c.
///
/// @return one, two (a simple root, then a double root) or three. Three roots are in the order of
/// the cosine formula: the smallest, the largest, the middle one.
/// Accuracy: that of the closed form, without refinement; about half the digits near a double root,
/// where rounding may also turn the two roots into a complex pair, which is not returned.
/// Source: Press et al., Numerical Recipes, 3rd ed. (2007), section 5.6.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots TQSolveP3(double a, double b, double c) noexcept;

/// Finds the real roots of a polynomial. Leading zero coefficients lower the degree: it uses
/// TQSolveP3, TQSolveP2, or the linear formula. A constant has no roots, even if it is 0. The roots
/// are neither refined nor sorted.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQPolynomialFindRoots(const TQPolynomial& polynomial) noexcept;

/// Returns the roots r with minimum < r - epsilon and r < maximum - epsilon, in the same order.
///
/// Both bounds are exclusive. The window is (minimum + epsilon, maximum - epsilon). A negative
/// epsilon widens it.
[[nodiscard]] constexpr TQPolynomialRoots TQPolynomialRootsFilter(const TQPolynomialRoots& roots,
                                                                  double minimum, double maximum,
                                                                  double epsilon) noexcept {
  TQPolynomialRoots kept;
  for (const double root : roots) {
    if (minimum < root - epsilon && root < maximum - epsilon) kept.roots[kept.count++] = root;
  }
  return kept;
}

/// Returns the roots in ascending order. If one is NaN, the order is unspecified.
[[nodiscard]] constexpr TQPolynomialRoots TQPolynomialRootsSort(TQPolynomialRoots roots) noexcept {
  const auto order = [&roots](int i, int j) {
    if (!(roots.roots[j] < roots.roots[i])) return;
    const double swapped = roots.roots[i];
    roots.roots[i] = roots.roots[j];
    roots.roots[j] = swapped;
  };
  if (roots.count == 2) order(0, 1);
  if (roots.count == 3) {
    order(0, 1);
    order(1, 2);
    order(0, 1);
  }
  return roots;
}

/// Returns the roots as a set of boxed numbers. +0 and -0 are one member, and so are all NaN.
/// Allocates the set and the numbers.
[[nodiscard]] TQ_EXPORT Ref<Set> TQPolynomialRootsMakeSet(const TQPolynomialRoots& roots);

}  // namespace tq
