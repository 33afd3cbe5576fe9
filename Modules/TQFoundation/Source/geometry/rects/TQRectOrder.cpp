#include <TQFoundation/geometry/rects/TQRectOrder.h>

#include <cmath>
#include <limits>

namespace tq {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// The edges and extents that are compared.
struct Box {
  double minX, minY, maxX, maxY, width, height;

  explicit Box(const Rect& rect) noexcept
      : minX(RectGetMinX(rect)),
        minY(RectGetMinY(rect)),
        maxX(RectGetMaxX(rect)),
        maxY(RectGetMaxY(rect)),
        width(RectGetWidth(rect)),
        height(RectGetHeight(rect)) {}
};

Rect turned(unsigned options, const Rect& rect) noexcept {
  const auto [x, y] = rect.origin;
  const auto [w, h] = rect.size;
  switch (options) {
    case 1:
      return {-x, y, -w, h};
    case 2:
      return {y, x, h, w};
    case 3:
      return {y, -x, h, -w};
    case 4:
      return {x, -y, w, -h};
    case 5:
      return {-x, -y, -w, -h};
    case 6:
      return {-y, x, -h, w};
    case 7:
      return {-y, -x, -h, -w};
    default:
      return rect;
  }
}

double lesser(double a, double b) noexcept { return a < b ? a : b; }
double greater(double a, double b) noexcept { return a > b ? a : b; }

// The first of the four edges that differs by more than epsilon decides.
int compareEdges(const double (&a)[4], const double (&b)[4]) noexcept {
  for (int i = 0; i < 4; ++i) {
    if (std::fabs(a[i] - b[i]) > kEpsilon) return a[i] < b[i] ? -1 : 1;
  }
  return 0;
}

int compareInReadingOrder(const Box& a, const Box& b) noexcept {
  // Two equal rects of height 0 return -1 here: they overlap by 0 and so are in different rows.
  const double overlapY = lesser(a.maxY, b.maxY) - greater(a.minY, b.minY);
  const double ratioY = overlapY / lesser(a.height, b.height);
  if (overlapY <= kEpsilon || ratioY <= 0.2) return b.minY < a.minY ? 1 : -1;

  // Two equal rects of width 0 return 1 here.
  const double overlapX = lesser(a.maxX, b.maxX) - greater(a.minX, b.minX);
  const double ratioX = overlapX / lesser(a.width, b.width);
  if (overlapX <= kEpsilon || ratioX <= 0) return a.minX < b.minX ? -1 : 1;

  if (ratioY >= 0.5 || ratioX / ratioY <= 0.8) {
    return compareEdges({a.minX, a.maxX, a.minY, a.maxY}, {b.minX, b.maxX, b.minY, b.maxY});
  }
  return compareEdges({a.minY, a.maxY, a.minX, a.maxX}, {b.minY, b.maxY, b.minX, b.maxX});
}

}  // namespace

int TQRectFuzzyCompareWithOptions(unsigned options, const Rect& a, const Rect& b) noexcept {
  return compareInReadingOrder(Box(turned(options, a)), Box(turned(options, b)));
}

}  // namespace tq
