#pragma once

/// @file AffineTransform.h
/// Affine transforms of the plane, as a row vector times a matrix:
///
///     [x' y' 1] = [x y 1] · | a   b   0 |
///                           | c   d   0 |
///                           | tx  ty  1 |

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The matrix as above, row by row without its last column. The identity unless given; whether it
/// can be inverted is not checked.
struct AffineTransform {
  double a = 1;   ///< what x adds to x'
  double b = 0;   ///< what x adds to y'
  double c = 0;   ///< what y adds to x'
  double d = 1;   ///< what y adds to y'
  double tx = 0;  ///< added to x'
  double ty = 0;  ///< added to y'

  friend constexpr bool operator==(const AffineTransform&,
                                   const AffineTransform&) noexcept = default;
};

/// Leaves every point where it is.
inline constexpr AffineTransform AffineTransformIdentity{};

/// first × second: `first` acts on a point before `second` does.
[[nodiscard]] constexpr AffineTransform AffineTransformConcat(
    const AffineTransform& first, const AffineTransform& second) noexcept {
  return {first.a * second.a + first.b * second.c,
          first.a * second.b + first.b * second.d,
          first.c * second.a + first.d * second.c,
          first.c * second.b + first.d * second.d,
          first.tx * second.a + first.ty * second.c + second.tx,
          first.tx * second.b + first.ty * second.d + second.ty};
}

/// The translation is prepended: it acts on a point before `transform` does.
[[nodiscard]] constexpr AffineTransform AffineTransformTranslate(const AffineTransform& transform,
                                                                 double tx, double ty) noexcept {
  return AffineTransformConcat({1, 0, 0, 1, tx, ty}, transform);
}

/// The scaling is prepended: it acts on a point before `transform` does.
[[nodiscard]] constexpr AffineTransform AffineTransformScale(const AffineTransform& transform,
                                                             double sx, double sy) noexcept {
  return AffineTransformConcat({sx, 0, 0, sy, 0, 0}, transform);
}

/// The rotation is prepended. From the x axis towards the y axis, in radians.
[[nodiscard]] TQ_EXPORT AffineTransform AffineTransformRotate(const AffineTransform& transform,
                                                              double angleRadians) noexcept;

/// The inverse; a transform without one (determinant 0 or NaN) is answered as it is.
[[nodiscard]] TQ_EXPORT AffineTransform
AffineTransformInvert(const AffineTransform& transform) noexcept;

/// The point's place after the transform.
[[nodiscard]] constexpr Point PointApplyAffineTransform(Point point,
                                                        const AffineTransform& t) noexcept {
  return {t.a * point.x + t.c * point.y + t.tx, t.b * point.x + t.d * point.y + t.ty};
}

/// Without the translation; an extent may come out negative.
[[nodiscard]] constexpr Size SizeApplyAffineTransform(Size size,
                                                      const AffineTransform& t) noexcept {
  return {t.a * size.width + t.c * size.height, t.b * size.width + t.d * size.height};
}

/// Bounds of the four transformed corners, standardised. Null stays null.
[[nodiscard]] TQ_EXPORT Rect RectApplyAffineTransform(const Rect& rect,
                                                      const AffineTransform& transform) noexcept;

}  // namespace tq
