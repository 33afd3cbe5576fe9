#include <TQFoundation/geometry/values/GeometrySystem.h>

namespace tq {
namespace {

double scaleBetween(double from, double to) noexcept { return from == 0 ? 1 : to / from; }

}  // namespace

GeometrySystem GeometrySystem::withFrame(const Rect& frame, const Rect& bounds) noexcept {
  const Rect outer = RectStandardize(frame);
  const Rect inner = RectStandardize(bounds);
  const double sx = scaleBetween(inner.size.width, outer.size.width);
  const double sy = scaleBetween(inner.size.height, outer.size.height);
  return {
      outer,
      inner,
      outer.size,
      {sx, 0, 0, sy, outer.origin.x - inner.origin.x * sx, outer.origin.y - inner.origin.y * sy}};
}

GeometrySystem GeometrySystem::withTransform(const Rect& bounds,
                                             const AffineTransform& transform) noexcept {
  const Rect frame = RectApplyAffineTransform(bounds, transform);
  return {frame, RectStandardize(bounds), frame.size, transform};
}

Point GeometrySystem::pointToParent(Point point) const noexcept {
  return PointApplyAffineTransform(point, transform);
}

Point GeometrySystem::pointFromParent(Point point) const noexcept {
  return PointApplyAffineTransform(point, AffineTransformInvert(transform));
}

Rect GeometrySystem::rectToParent(const Rect& rect) const noexcept {
  return RectApplyAffineTransform(rect, transform);
}

Rect GeometrySystem::rectFromParent(const Rect& rect) const noexcept {
  return RectApplyAffineTransform(rect, AffineTransformInvert(transform));
}

}  // namespace tq
