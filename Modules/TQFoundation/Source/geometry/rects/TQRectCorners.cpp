#include <TQFoundation/geometry/rects/TQRectCorners.h>

#include <cmath>
#include <iterator>

namespace tq {
namespace {

// Which part of an axis a corner is on.
enum class Part { min, mid, max };

struct Place {
  Part x, y;
};

constexpr Place kPlaces[] = {
    {Part::min, Part::min}, {Part::max, Part::min}, {Part::min, Part::max},
    {Part::max, Part::max}, {Part::mid, Part::min}, {Part::min, Part::mid},
    {Part::max, Part::mid}, {Part::mid, Part::max}, {Part::mid, Part::mid}};

const Place* placeOf(TQCorner corner) noexcept {
  const auto index = static_cast<unsigned>(corner);
  return index < std::size(kPlaces) ? &kPlaces[index] : nullptr;
}

double coordinate(Part part, double min, double extent) noexcept {
  switch (part) {
    case Part::min:
      return min;
    case Part::mid:
      return min + extent / 2;
    default:
      return min + extent;
  }
}

// Returns the origin of an extent whose given part is at `at`.
double originPutting(Part part, double at, double extent) noexcept {
  switch (part) {
    case Part::min:
      return at;
    case Part::mid:
      return at - extent / 2;
    default:
      return at - extent;
  }
}

}  // namespace

Point TQRectPointForCorner(const Rect& rect, TQCorner corner) noexcept {
  const Place* place = placeOf(corner);
  if (place == nullptr) return {};
  const auto [origin, size] = RectStandardize(rect);
  return {coordinate(place->x, origin.x, size.width), coordinate(place->y, origin.y, size.height)};
}

Point TQRectGetMidOfEdge(const Rect& rect, Edge edge) noexcept {
  switch (edge) {
    case Edge::minX:
      return {RectGetMinX(rect), RectGetMidY(rect)};
    case Edge::minY:
      return {RectGetMidX(rect), RectGetMinY(rect)};
    case Edge::maxX:
      return {RectGetMaxX(rect), RectGetMidY(rect)};
    case Edge::maxY:
      return {RectGetMidX(rect), RectGetMaxY(rect)};
  }
  return {};
}

TQCorner TQRectClosestCornerForPoint(Point point, double maximumDistance, TQCornerMask cornerMask,
                                     const Rect& rect) noexcept {
  return TQCornerFirstCornerSatisfyingPredicate([&](TQCorner corner) {
    if ((cornerMask & TQCornerMaskFromCorner(corner)) == 0) return false;
    const Point at = TQRectPointForCorner(rect, corner);
    return std::hypot(at.x - point.x, at.y - point.y) < maximumDistance;
  });
}

Rect TQRectWithCornerAtPoint(Size size, Point point, TQCorner corner) noexcept {
  const Place* place = placeOf(corner);
  if (place == nullptr) return RectNull;
  const double width = std::fabs(size.width);
  const double height = std::fabs(size.height);
  return RectStandardize({originPutting(place->x, point.x, width),
                          originPutting(place->y, point.y, height), width, height});
}

Rect TQRectResizeByPuttingCorner(Point point, const Rect& rect, TQCorner corner) noexcept {
  const Place* place = placeOf(corner);
  if (place == nullptr) return rect;
  Rect result = rect;
  if (place->x == Part::min) {
    result.origin.x = point.x;
    result.size.width = RectGetMaxX(rect) - point.x;
  } else if (place->x == Part::max) {
    result.size.width = point.x - rect.origin.x;
  }
  if (place->y == Part::min) {
    result.origin.y = point.y;
    result.size.height = RectGetMaxY(rect) - point.y;
  } else if (place->y == Part::max) {
    result.size.height = point.y - rect.origin.y;
  }
  return result;
}

}  // namespace tq
