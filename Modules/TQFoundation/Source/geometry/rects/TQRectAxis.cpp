#include <TQFoundation/geometry/rects/TQRectAxis.h>

namespace tq {
namespace {

struct Span {
  double origin;
  double length;
  [[nodiscard]] double end() const noexcept { return origin + length; }
};

Span rawSpan(Axis axis, const Rect& rect) noexcept {
  return {detail::originOn(axis, rect), detail::extentOn(axis, rect)};
}

// Returns how much of `later` is before the end of `earlier`, which starts at the same place or
// before.
double overlapInOrder(Span earlier, Span later) noexcept {
  const double end = earlier.end();
  if (end < later.origin) return 0;
  return end <= later.end() ? end - later.origin : later.length;
}

double rawOverlap(Span a, Span b) noexcept {
  return b.origin <= a.origin ? overlapInOrder(b, a) : overlapInOrder(a, b);
}

}  // namespace

double TQRectValueForKey(const Rect& rect, std::string_view key) noexcept {
  if (key == "minX") return RectGetMinX(rect);
  if (key == "midX") return RectGetMidX(rect);
  if (key == "maxX") return RectGetMaxX(rect);
  if (key == "minY") return RectGetMinY(rect);
  if (key == "midY") return RectGetMidY(rect);
  if (key == "maxY") return RectGetMaxY(rect);
  return 0;
}

bool TQRectIntersectsRectOnAxis(Axis axis, const Rect& a, const Rect& b) noexcept {
  return rawOverlap(rawSpan(axis, a), rawSpan(axis, b)) != 0;
}

bool TQRectIntersectsOrAbutsRectOnAxis(Axis axis, const Rect& a, const Rect& b) noexcept {
  const Span one = rawSpan(axis, a);
  const Span other = rawSpan(axis, b);
  return one.origin == other.end() || one.end() == other.origin || rawOverlap(one, other) > 0;
}

bool TQRectContainsRectOnAxis(Axis axis, const Rect& a, const Rect& b) noexcept {
  if (axis != Axis::horizontal && axis != Axis::vertical) return false;
  return TQRectMinForAxis(axis, b) >= TQRectMinForAxis(axis, a) &&
         TQRectMaxForAxis(axis, b) <= TQRectMaxForAxis(axis, a);
}

}  // namespace tq
