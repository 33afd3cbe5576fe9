#include <TQFoundation/geometry/rects/TQRectFitting.h>

namespace tq {
namespace {

double expandedExtent(double extent, double margin) noexcept {
  const double expanded = extent + 2 * margin;
  return expanded < 0 ? 0 : expanded;
}

}  // namespace

Rect TQRectWithSizeProportionallyAroundRect(Size size, const Rect& rect) noexcept {
  auto [width, height] = TQRectWithSizeProportionallyInRect(size, rect).size;
  if (width < rect.size.width) {
    const double factor = rect.size.width / width;
    width *= factor;
    height *= factor;
  }
  if (height < rect.size.height) {
    const double factor = rect.size.height / height;
    width *= factor;
    height *= factor;
  }
  return {rect.origin.x + (rect.size.width - width) / 2,
          rect.origin.y + (rect.size.height - height) / 2, width, height};
}

Rect TQRectWithWidthRespectingProportions(double width, const Rect& rect) noexcept {
  const double height =
      rect.size.width == 0 ? rect.size.height : width * rect.size.height / rect.size.width;
  return {rect.origin, {width, height}};
}

Rect TQRectWithHeightRespectingProportions(double height, const Rect& rect) noexcept {
  const double width =
      rect.size.height == 0 ? rect.size.width : height * rect.size.width / rect.size.height;
  return {rect.origin, {width, height}};
}

Rect TQRectWithSizeOnAxisAspectRatio(Axis axis, double size, double aspectRatio,
                                     const Rect& rect) noexcept {
  if (axis == Axis::horizontal) return {rect.origin, {size, size / aspectRatio}};
  return {rect.origin, {size * aspectRatio, size}};
}

Rect TQRectScale(const Rect& rect, double factor) noexcept {
  if (RectIsNull(rect)) return RectNull;
  return {rect.origin.x * factor, rect.origin.y * factor, rect.size.width * factor,
          rect.size.height * factor};
}

Rect TQRectExpand(const Rect& rect, double margin) noexcept {
  if (RectIsNull(rect)) return RectNull;
  const Rect standard = RectStandardize(rect);
  const double width = expandedExtent(standard.size.width, margin);
  const double height = expandedExtent(standard.size.height, margin);
  // An edge that would pass the middle stops there. All others move by exactly the margin.
  return {width == 0 ? RectGetMidX(rect) : standard.origin.x - margin,
          height == 0 ? RectGetMidY(rect) : standard.origin.y - margin, width, height};
}

Rect TQRectAbsolute(const Rect& unitRect, const Rect& reference) noexcept {
  if (RectIsNull(unitRect)) return RectNull;
  const auto [origin, size] = RectStandardize(reference);
  return {origin.x + unitRect.origin.x * size.width, origin.y + unitRect.origin.y * size.height,
          unitRect.size.width * size.width, unitRect.size.height * size.height};
}

Rect TQRectRelative(const Rect& rect, const Rect& reference) noexcept {
  if (RectIsNull(rect)) return RectNull;
  const auto [origin, size] = RectStandardize(reference);
  return {(rect.origin.x - origin.x) / size.width, (rect.origin.y - origin.y) / size.height,
          rect.size.width / size.width, rect.size.height / size.height};
}

Rect TQRectFromCoordinateSpaceRectToRect(const Rect& rect, const Rect& from,
                                         const Rect& to) noexcept {
  return TQRectAbsolute(TQRectRelative(rect, from), to);
}

}  // namespace tq
