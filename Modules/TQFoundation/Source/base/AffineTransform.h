#pragma once

/// @file AffineTransform.h
/// Affine transforms of the plane. A point is a row vector, multiplied by the matrix:
///
///     [x' y' 1] = [x y 1] · | a   b   0 |
///                           | c   d   0 |
///                           | tx  ty  1 |

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// An affine transform: a matrix of 3 rows without its last column, which is constant. The default
/// is the identity. The matrix need not be invertible.
struct AffineTransform {
  double a = 1;   ///< contribution of x to x'
  double b = 0;   ///< contribution of x to y'
  double c = 0;   ///< contribution of y to x'
  double d = 1;   ///< contribution of y to y'
  double tx = 0;  ///< added to x'
  double ty = 0;  ///< added to y'

  friend constexpr bool operator==(const AffineTransform&,
                                   const AffineTransform&) noexcept = default;
};

/// The identity: maps every point to itself.
inline constexpr AffineTransform AffineTransformIdentity{};

/// Returns first × second: `first` is applied to a point before `second`.
[[nodiscard]] constexpr AffineTransform AffineTransformConcat(
    const AffineTransform& first, const AffineTransform& second) noexcept {
  return {first.a * second.a + first.b * second.c,
          first.a * second.b + first.b * second.d,
          first.c * second.a + first.d * second.c,
          first.c * second.b + first.d * second.d,
          first.tx * second.a + first.ty * second.c + second.tx,
          first.tx * second.b + first.ty * second.d + second.ty};
}

/// Prepends a translation: it is applied to a point before `transform`.
[[nodiscard]] constexpr AffineTransform AffineTransformTranslate(const AffineTransform& transform,
                                                                 double tx, double ty) noexcept {
  return AffineTransformConcat({1, 0, 0, 1, tx, ty}, transform);
}

/// Prepends a scaling: it is applied to a point before `transform`.
[[nodiscard]] constexpr AffineTransform AffineTransformScale(const AffineTransform& transform,
                                                             double sx, double sy) noexcept {
  return AffineTransformConcat({sx, 0, 0, sy, 0, 0}, transform);
}

/// Prepends a rotation by an angle in radians, from the x axis towards the y axis.
[[nodiscard]] TQ_EXPORT AffineTransform AffineTransformRotate(const AffineTransform& transform,
                                                              double angleRadians) noexcept;

/// Returns the inverse. Returns `transform` unchanged if it has none (determinant 0 or NaN). The
/// determinant is a double: where it overflows, or becomes 0 or denormal, the result is zero,
/// `transform`, or inexact.
[[nodiscard]] TQ_EXPORT AffineTransform
AffineTransformInvert(const AffineTransform& transform) noexcept;

/// Returns the transformed point.
[[nodiscard]] constexpr Point PointApplyAffineTransform(Point point,
                                                        const AffineTransform& t) noexcept {
  return {t.a * point.x + t.c * point.y + t.tx, t.b * point.x + t.d * point.y + t.ty};
}

/// Transforms a size; the translation is ignored. Extents of the result may be negative.
[[nodiscard]] constexpr Size SizeApplyAffineTransform(Size size,
                                                      const AffineTransform& t) noexcept {
  return {t.a * size.width + t.c * size.height, t.b * size.width + t.d * size.height};
}

/// Returns the bounds of the four transformed corners, standardised. The null rect stays null.
[[nodiscard]] TQ_EXPORT Rect RectApplyAffineTransform(const Rect& rect,
                                                      const AffineTransform& transform) noexcept;

}  // namespace tq
