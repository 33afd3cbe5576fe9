#pragma once

/// @file TQPolynomial.h
/// Polynomials up to degree three and their real roots in closed form.
///
/// Every function is pure, allocates nothing unless it says so, and may be called on any thread.
/// NaN runs through. Roots that are lost to it or to overflow come out NaN or infinite, both of
/// which the filter drops, or not at all. What adds to a product is not inline, so that no compiler
/// flag of a caller can contract it.

#include <cstdint>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Set.h>

namespace tq {

/// a·t³ + b·t² + c·t + d
struct TQPolynomial {
  /// Coefficients, highest power first; leading ones may be 0.
  double a = 0;
  double b = 0;
  double c = 0;
  double d = 0;

  friend constexpr bool operator==(const TQPolynomial&, const TQPolynomial&) noexcept = default;
};

/// Up to three real numbers: `count` of them in use, from the front; unused ones are 0. A loop over
/// it takes the used ones; a count outside 0...3 uses none.
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
static_assert(std::is_trivially_copyable_v<TQPolynomialRoots>, "travels by value");

/// The fields by position.
[[nodiscard]] constexpr TQPolynomial TQPolynomialMake(double a, double b, double c,
                                                      double d) noexcept {
  return {a, b, c, d};
}

/// The value at t, as t·(t²·a + c) + t²·b + d.
[[nodiscard]] TQ_EXPORT double TQPolynomialEvalulate(const TQPolynomial& polynomial,
                                                     double t) noexcept;

/// Each coefficient whose magnitude is below `threshold` becomes 0; one equal to it stays, and so
/// does NaN.
[[nodiscard]] constexpr TQPolynomial TQPolynomialHighPassFilter(double threshold,
                                                                const TQPolynomial& p) noexcept {
  const auto pass = [threshold](double v) { return (v < 0 ? -v : v) < threshold ? 0 : v; };
  return {pass(p.a), pass(p.b), pass(p.c), pass(p.d)};
}

/// Real roots of t² + b·t + c: two, the larger first (a double root twice), or none.
///
/// Accuracy: as the closed form gives it. Where |b| is far above |c|, the root near 0 loses digits.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots TQSolveP2(double b, double c) noexcept;

/// Real roots of t³ + a·t² + b·t + c: one, two (a simple one, then one that is double) or three.
///
/// The three come in the order of the cosine formula: the smallest first, then the largest, then
/// the middle one.
/// Accuracy: as the closed form gives it, not polished. Half the digits near a double root, whose
/// pair rounding may also take for complex.
/// Source: Press et al., Numerical Recipes, 3rd ed. (2007), section 5.6.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots TQSolveP3(double a, double b, double c) noexcept;

/// Real roots by the degree that the leading coefficients leave: TQSolveP3, TQSolveP2, one, or none
/// (for a constant, 0 = 0 included). Neither polished nor sorted.
[[nodiscard]] TQ_EXPORT TQPolynomialRoots
TQPolynomialFindRoots(const TQPolynomial& polynomial) noexcept;

/// The roots r with minimum < r - epsilon and r < maximum - epsilon, in the order they had.
///
/// Both bounds are exclusive and both are held against r - epsilon or maximum - epsilon: the window
/// is (minimum + epsilon, maximum - epsilon). A negative epsilon widens it.
[[nodiscard]] constexpr TQPolynomialRoots TQPolynomialRootsFilter(const TQPolynomialRoots& roots,
                                                                  double minimum, double maximum,
                                                                  double epsilon) noexcept {
  TQPolynomialRoots kept;
  for (const double root : roots) {
    if (minimum < root - epsilon && root < maximum - epsilon) kept.roots[kept.count++] = root;
  }
  return kept;
}

/// The used roots ascending. NaN has no place in the order and may stand anywhere.
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

/// The used roots as a set of boxed numbers; +0 and -0 are one member, NaN and NaN are one.
/// Allocates the set and the numbers.
[[nodiscard]] TQ_EXPORT Ref<Set> TQPolynomialRootsMakeSet(const TQPolynomialRoots& roots);

}  // namespace tq
