#include <TQFoundation/base/AffineTransform.h>

#include <algorithm>
#include <cmath>

namespace tq {

AffineTransform AffineTransformRotate(const AffineTransform& transform,
                                      double angleRadians) noexcept {
  const double cosine = std::cos(angleRadians);
  const double sine = std::sin(angleRadians);
  return AffineTransformConcat({cosine, sine, -sine, cosine, 0, 0}, transform);
}

AffineTransform AffineTransformInvert(const AffineTransform& t) noexcept {
  const double determinant = t.a * t.d - t.b * t.c;
  if (determinant == 0 || std::isnan(determinant)) return t;
  return {t.d / determinant,
          -t.b / determinant,
          -t.c / determinant,
          t.a / determinant,
          (t.c * t.ty - t.d * t.tx) / determinant,
          (t.b * t.tx - t.a * t.ty) / determinant};
}

Rect RectApplyAffineTransform(const Rect& rect, const AffineTransform& transform) noexcept {
  if (RectIsNull(rect)) return RectNull;
  const Rect from = RectStandardize(rect);
  const double farX = from.origin.x + from.size.width;
  const double farY = from.origin.y + from.size.height;
  const Point p0 = PointApplyAffineTransform(from.origin, transform);
  const Point p1 = PointApplyAffineTransform({farX, from.origin.y}, transform);
  const Point p2 = PointApplyAffineTransform({farX, farY}, transform);
  const Point p3 = PointApplyAffineTransform({from.origin.x, farY}, transform);
  const auto [minX, maxX] = std::minmax({p0.x, p1.x, p2.x, p3.x});
  const auto [minY, maxY] = std::minmax({p0.y, p1.y, p2.y, p3.y});
  return {minX, minY, maxX - minX, maxY - minY};
}

}  // namespace tq
