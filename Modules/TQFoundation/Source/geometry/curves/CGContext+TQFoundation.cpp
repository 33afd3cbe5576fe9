#include <TQFoundation/geometry/curves/CGContext+TQFoundation.h>

namespace tq {
namespace {

constexpr double kKappa = 0.5522847498;

double safeRadius(double radius, double extent) noexcept {
  if (!(radius > 0)) return 0;
  return radius > extent / 2 ? extent / 2 : radius;
}

Path roundedRect(const Rect& rect, double cw, double ch) {
  const double minX = RectGetMinX(rect), maxX = RectGetMaxX(rect);
  const double minY = RectGetMinY(rect), maxY = RectGetMaxY(rect);
  Path path;
  path.moveTo({maxX, RectGetMidY(rect)});
  path.lineTo({maxX, maxY - ch});
  path.cubicTo({maxX, maxY - ch + kKappa * ch}, {maxX - cw + kKappa * cw, maxY}, {maxX - cw, maxY});
  path.lineTo({minX + cw, maxY});
  path.cubicTo({minX + cw - kKappa * cw, maxY}, {minX, maxY - ch + kKappa * ch}, {minX, maxY - ch});
  path.lineTo({minX, minY + ch});
  path.cubicTo({minX, minY + ch - kKappa * ch}, {minX + cw - kKappa * cw, minY}, {minX + cw, minY});
  path.lineTo({maxX - cw, minY});
  path.cubicTo({maxX - cw + kKappa * cw, minY}, {maxX, minY + ch - kKappa * ch}, {maxX, minY + ch});
  path.close();
  return path;
}

}  // namespace

Path CGPathCreateWithRoundedRectSafeCorners(const Rect& rect, double cornerWidth,
                                            double cornerHeight, const AffineTransform* transform) {
  const double cw = safeRadius(cornerWidth, RectGetWidth(rect));
  const double ch = safeRadius(cornerHeight, RectGetHeight(rect));
  const bool isPlain = RectIsNull(rect) || cw == 0 || ch == 0;
  const Path path = isPlain ? Path::pathWithRect(rect) : roundedRect(rect, cw, ch);
  return transform == nullptr ? path : path.transformed(*transform);
}

}  // namespace tq
