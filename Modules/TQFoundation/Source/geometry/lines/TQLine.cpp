#include <TQFoundation/geometry/lines/TQLine.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <numbers>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/geometry/rects/TQAngle.h>
#include <TQFoundation/geometry/rects/TQSize.h>
#include <TQFoundation/geometry/values/VectorAlgebra.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Number.h>

namespace tq {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// NaN, the parameter of a segment of length 0, counts as outside.
bool covers(const TQLineSegment& segment, Point point) noexcept {
  const double t = segment.parameterOf(point);
  return t >= 0 && t <= 1;
}

bool isWithin(double value, double minimum, double maximum) noexcept {
  return minimum <= value && value <= maximum;
}

std::array<Point, 4> corners(const Rect& standard) noexcept {
  const double maxX = RectGetMaxX(standard);
  const double maxY = RectGetMaxY(standard);
  return {standard.origin, Point{maxX, standard.origin.y}, Point{maxX, maxY},
          Point{standard.origin.x, maxY}};
}

/// Returns the line's x at y. Unlike TQLineGetXForY(), it finds x = c/a of a vertical line at any
/// y, even if y is infinite or NaN.
double crossingAt(const TQLine& line, double y) noexcept {
  return line.a != 0 && line.b == 0 ? line.c / line.a : TQLineGetXForY(line, y);
}

/// Returns the signed distance from the line; positive on the side that the normal points to.
double signedDistance(const TQLine& line, Point from) noexcept {
  return (line.a * from.x + line.b * from.y - line.c) / std::hypot(line.a, line.b);
}

double distanceToRect(Point point, const Rect& standard) noexcept {
  const double x =
      std::max({RectGetMinX(standard) - point.x, 0.0, point.x - RectGetMaxX(standard)});
  const double y =
      std::max({RectGetMinY(standard) - point.y, 0.0, point.y - RectGetMaxY(standard)});
  return std::hypot(x, y);
}

/// The part of a segment inside a closed rect.
struct Clip {
  double entry = 0;
  double exit = 1;

  /// Narrows the part to one side of the rect, where p·t <= q inside. Returns false if nothing is
  /// left. The comparisons are written so that NaN results in an empty part.
  bool narrow(double p, double q) noexcept {
    if (p == 0) return q >= 0;
    const double t = q / p;
    if (p < 0) {
      if (!(t <= exit)) return false;
      entry = std::max(entry, t);
    } else {
      if (!(t >= entry)) return false;
      exit = std::min(exit, t);
    }
    return true;
  }

  bool narrow(const TQLineSegment& segment, const Rect& rect) noexcept {
    const auto [x, y] = segment.start;
    const auto [dx, dy] = segment.delta;
    return narrow(-dx, x - RectGetMinX(rect)) && narrow(-dy, y - RectGetMinY(rect)) &&
           narrow(dx, RectGetMaxX(rect) - x) && narrow(dy, RectGetMaxY(rect) - y);
  }
};

}  // namespace

std::optional<TQLineSegment> TQLine::clipped(const Rect& to) const noexcept {
  if (RectIsNull(to) || !TQLineIntersectsRect(*this, to)) return std::nullopt;
  if (a == 0 || b == 0) return TQLineSegmentInRect(*this, to);
  const double minX = RectGetMinX(to), maxX = RectGetMaxX(to);
  const double minY = RectGetMinY(to), maxY = RectGetMaxY(to);
  const auto pointAt = [&](double edge) {
    const double x = TQLineGetXForY(*this, edge);
    if (!(x < minX || x > maxX)) return Point{x, edge};
    // If the line runs along a side, rounding may have moved it off the rect. Then y is noise.
    const double side = x < minX ? minX : maxX;
    return Point{side, std::clamp(TQLineGetYForX(*this, side), minY, maxY)};
  };
  const Point from = pointAt(minY);
  const Point end = pointAt(maxY);
  return TQLineSegment{from, {end.x - from.x, end.y - from.y}};
}

Point TQLine::pointClosestTo(Point point) const noexcept {
  const Vector normal = VectorNormalise({a, b});
  const double offset = signedDistance(*this, point);
  return {point.x - normal.dx * offset, point.y - normal.dy * offset};
}

double TQLine::distance(Point from) const noexcept {
  return std::fabs(signedDistance(*this, from));
}

double TQLine::distance(const Rect& from) const noexcept {
  if (RectIsNull(from)) return kInfinity;
  if (TQLineIntersectsRect(*this, from)) return 0;
  double nearest = kNaN;
  for (const Point corner : corners(RectStandardize(from))) {
    nearest = std::fmin(nearest, distance(corner));
  }
  return nearest;
}

std::optional<TQLineSegment> TQLineSegment::clipped(const Rect& to) const noexcept {
  if (!std::isfinite(delta.dx) || !std::isfinite(delta.dy)) return std::nullopt;
  Clip clip;
  if (!clip.narrow(*this, to)) return std::nullopt;
  const Point from{start.x + clip.entry * delta.dx, start.y + clip.entry * delta.dy};
  const double length = clip.exit - clip.entry;
  return TQLineSegment{from, {length * delta.dx, length * delta.dy}};
}

TQLine TQLineSegment::infinite() const noexcept {
  if (delta.dx == 0) return {1, 0, start.x};
  if (delta.dy == 0) return {0, 1, start.y};
  return {-delta.dy, delta.dx, start.y * delta.dx - start.x * delta.dy};
}

double TQLineSegment::parameterOf(Point point) const noexcept {
  const double x = point.x - start.x;
  const double y = point.y - start.y;
  const double u = delta.dx != 0 ? x / delta.dx : x;
  const double v = delta.dy != 0 ? y / delta.dy : y;
  const double dx2 = delta.dx * delta.dx;
  const double dy2 = delta.dy * delta.dy;
  return (u * dx2 + v * dy2) / (dx2 + dy2);
}

Point TQLineSegment::pointClosestTo(Point point) const noexcept {
  const double length = VectorGetLength(delta);
  if (length == 0) return start;
  const Vector direction = VectorNormalise(delta);
  const double offset = VectorDotProduct(point - start, direction);
  if (offset <= 0) return start;
  if (offset >= length) return end();
  return start + offset * direction;
}

double TQLineSegment::distance(Point from) const noexcept {
  const Point closest = pointClosestTo(from);
  return std::hypot(from.x - closest.x, from.y - closest.y);
}

double TQLineSegment::distance(const Rect& from) const noexcept {
  if (RectIsNull(from)) return kInfinity;
  if (TQLineSegmentIntersectsRect(*this, from)) return 0;
  const Rect rect = RectStandardize(from);
  double nearest = std::fmin(distanceToRect(start, rect), distanceToRect(end(), rect));
  for (const Point corner : corners(rect)) nearest = std::fmin(nearest, distance(corner));
  return nearest;
}

std::string TQLineSegment::debugDescription() const {
  return textFromPoint(start) + " -> " + textFromPoint(end());
}

double TQLineGetYForX(const TQLine& line, double x) noexcept {
  if (line.b == 0) return kNaN;
  return line.a == 0 ? line.c / line.b : (line.c - line.a * x) / line.b;
}

double TQLineGetXForY(const TQLine& line, double y) noexcept {
  if (line.a == 0) return kNaN;
  return (line.c - line.b * y) / line.a;
}

bool TQLineEqualToLine(const TQLine& l1, const TQLine& l2) noexcept {
  constexpr double kDifference = 1e-09;
  return std::fabs(l1.a - l2.a) < kDifference && std::fabs(l1.b - l2.b) < kDifference &&
         std::fabs(l1.c - l2.c) < kDifference;
}

double TQLineDotProduct(const TQLine& l1, const TQLine& l2) noexcept {
  const Size n1 = TQSizeNormalise({l1.a, l1.b});
  const Size n2 = TQSizeNormalise({l2.a, l2.b});
  return n1.width * n2.width + n1.height * n2.height;
}

double TQLineAngleBetween(const TQLine& l1, const TQLine& l2) noexcept {
  return std::acos(TQLineDotProduct(l1, l2));
}

bool TQLineIsPerpendicularToLine(const TQLine& l1, const TQLine& l2) noexcept {
  return std::fabs(TQLineDotProduct(l1, l2)) <= 0.001;
}

bool TQLineIsCollinearWithLine(const TQLine& l1, const TQLine& l2) noexcept {
  return std::fabs(TQLineDotProduct(l1, l2) - 1) <= 0.001;
}

bool TQLineIsParallelToLine(const TQLine& l1, const TQLine& l2) noexcept {
  if (std::fabs(l1.b) <= 0.001 && std::fabs(l2.b) <= 0.001) return true;
  return std::fabs(l1.a / l1.b - l2.a / l2.b) <= 0.001;
}

double TQLineSignedAngleBetween(const TQLine& l1, const TQLine& l2) noexcept {
  return TQNormalizeRadians(std::atan2(l2.a, l2.b) - std::atan2(l1.a, l1.b));
}

double TQLineSignedAngleFromXAxis(const TQLine& line) noexcept {
  return std::atan2(line.a, -line.b);  // never outside [-π, π]
}

Point TQLineIntersection(const TQLine& l1, const TQLine& l2) noexcept {
  const double determinant = l1.a * l2.b - l1.b * l2.a;
  if (determinant == 0) return TQLineNoIntersection;
  return {(l2.b * l1.c - l1.b * l2.c) / determinant, (l1.a * l2.c - l2.a * l1.c) / determinant};
}

Point TQLineIntersectionWithSegment(const TQLine& line, const TQLineSegment& segment) noexcept {
  const Point point = TQLineIntersection(line, segment.infinite());
  return point != TQLineNoIntersection && covers(segment, point) ? point : TQLineNoIntersection;
}

Point TQLineSegmentIntersection(const TQLineSegment& s1, const TQLineSegment& s2) noexcept {
  const Point point = TQLineIntersectionWithSegment(s1.infinite(), s2);
  return point != TQLineNoIntersection && covers(s1, point) ? point : TQLineNoIntersection;
}

bool TQLineIntersectsRect(const TQLine& line, const Rect& rect) noexcept {
  const double minX = RectGetMinX(rect);
  const double maxX = RectGetMaxX(rect);
  const double minY = RectGetMinY(rect);
  const double maxY = RectGetMaxY(rect);
  // If b is 0 the y are NaN, if a is 0 the x are NaN. NaN is not within any range.
  return isWithin(TQLineGetYForX(line, minX), minY, maxY) ||
         isWithin(TQLineGetYForX(line, maxX), minY, maxY) ||
         isWithin(crossingAt(line, minY), minX, maxX) ||
         isWithin(crossingAt(line, maxY), minX, maxX);
}

TQLineSegment TQLineSegmentInRect(const TQLine& line, const Rect& rect) noexcept {
  const double minX = RectGetMinX(rect);
  const double maxX = RectGetMaxX(rect);
  const double minY = RectGetMinY(rect);
  const double maxY = RectGetMaxY(rect);
  if (line.a == 0) return {{minX, TQLineGetYForX(line, minX)}, {maxX - minX, 0}};
  if (line.b == 0) return {{line.c / line.a, minY}, {0, maxY - minY}};
  const auto pointAt = [&](double y, double x) {
    Point point = TQLineGetPointForY(line, y);
    if (point.x < minX || point.x > maxX) {
      point.y = TQLineGetYForX(line, x);
      point.x = TQLineGetXForY(line, point.y);
    }
    return point;
  };
  const Point start = pointAt(minY, minX);
  const Point end = pointAt(maxY, maxX);
  return {start, {end.x - start.x, end.y - start.y}};
}

bool TQLineSegmentIntersectsRect(const TQLineSegment& segment, const Rect& rect) noexcept {
  return Clip().narrow(segment, rect);
}

AffineTransform TQLineTransformToXAxis(const TQLine& line) noexcept {
  constexpr double kHorizontal = std::numeric_limits<float>::epsilon();
  if (std::fabs(line.a) <= kHorizontal) {
    return AffineTransformTranslate(AffineTransformIdentity, 0, -line.c / line.b);
  }
  // The transform that is added last is applied to a point first. The rotation maps the normal to
  // +y: with its sine a/|n| and cosine b/|n|, the y of a rotated point is its distance from the
  // line.
  const double intercept = line.c / line.a;
  AffineTransform transform = AffineTransformTranslate(AffineTransformIdentity, intercept, 0);
  transform = AffineTransformRotate(transform, std::atan2(line.a, line.b));
  return AffineTransformTranslate(transform, -intercept, 0);
}

double TQNormalizePolar(double angleRadians) noexcept {
  if (!std::isfinite(angleRadians)) assertionFailed(__func__, __FILE__, __LINE__, "FALSE");
  double angle = angleRadians;
  if (std::fabs(angle) > TQNormalizeRadiansStepLimit * kTurn) angle = std::fmod(angle, kTurn);
  while (angle < 0) angle += kTurn;
  while (angle > kTurn) angle -= kTurn;
  return angle;
}

double LRAngleBetweenVectors(Point p1, Point vertex, Point p3) noexcept {
  const double angle1 = TQNormalizePolar(std::atan2(p1.y - vertex.y, p1.x - vertex.x));
  const double angle3 = TQNormalizePolar(std::atan2(p3.y - vertex.y, p3.x - vertex.x));
  return angle3 - angle1;
}

bool LRTriangleIsClockwise(Point p1, Point p2, Point p3) noexcept {
  return (p2.y - p3.y) * p1.x + (p3.y - p1.y) * p2.x + (p1.y - p2.y) * p3.x < 0;
}

Point TQPointAtDistanceAndSlopeFromPoint(double distance, double slopeRadians,
                                         Point point) noexcept {
  return {point.x + distance * std::cos(slopeRadians), point.y + distance * std::sin(slopeRadians)};
}

std::ptrdiff_t TQIndexOfPointClosestToPoint(std::span<const Point> points, Point point) noexcept {
  std::ptrdiff_t closest = -1;
  double shortest = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double distance = std::hypot(points[i].x - point.x, points[i].y - point.y);
    if (distance < shortest || (closest < 0 && distance >= 0)) {
      closest = static_cast<std::ptrdiff_t>(i);
      shortest = distance;
    }
  }
  return closest;
}

std::string TQLineDescription(const TQLine& line) {
  const auto text = [](double value) { return NumberValue(value).text(); };
  const auto term = [&](double factor, const char* name) {
    return factor == 1 ? std::string(name) : text(factor) + name;
  };
  const std::string right = " = " + text(line.c);
  if (line.a == 0) return term(line.b, "y") + right;
  const std::string x = term(line.a, "x");
  if (line.b == 0) return x + right;
  if (line.b < 0) return x + " - " + text(-line.b) + "y" + right;
  return x + " + " + term(line.b, "y") + right;
}

}  // namespace tq
