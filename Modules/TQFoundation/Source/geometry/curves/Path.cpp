#include <TQFoundation/geometry/curves/Path.h>

#include <array>

#include <TQFoundation/base/MakeRoom.h>
#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/geometry/curves/TQBezierSegmentIterator.h>

namespace tq {

using detail::makeRoom;

Path Path::pathWithRect(const Rect& rect) {
  Path path;
  if (RectIsNull(rect)) return path;
  const double minX = RectGetMinX(rect), maxX = RectGetMaxX(rect);
  const double minY = RectGetMinY(rect), maxY = RectGetMaxY(rect);
  path.moveTo({minX, minY});
  path.lineTo({maxX, minY});
  path.lineTo({maxX, maxY});
  path.lineTo({minX, maxY});
  path.close();
  return path;
}

void Path::moveTo(Point point) {
  add(PathElementType::move, std::span(&point, 1));
  subpathStart_ = point;
}

void Path::lineTo(Point point) {
  TQ_ASSERT(!isEmpty());
  add(PathElementType::line, std::span(&point, 1));
}

void Path::quadraticTo(Point control, Point end) {
  TQ_ASSERT(!isEmpty());
  add(PathElementType::quadratic, std::array{control, end});
}

void Path::cubicTo(Point control1, Point control2, Point end) {
  TQ_ASSERT(!isEmpty());
  add(PathElementType::cubic, std::array{control1, control2, end});
}

void Path::close() {
  TQ_ASSERT(!isEmpty());
  add(PathElementType::close, {});
}

void Path::append(const Path& other) {
  const Point start = other.isEmpty() ? subpathStart_ : other.subpathStart_;
  makeRoom(types_, other.types_.size());
  makeRoom(points_, other.points_.size());
  // Copies by index and count, because `other` may be this path.
  const std::size_t types = other.types_.size(), points = other.points_.size();
  for (std::size_t i = 0; i < types; ++i) types_.push_back(other.types_[i]);
  for (std::size_t i = 0; i < points; ++i) points_.push_back(other.points_[i]);
  subpathStart_ = start;
}

std::optional<Point> Path::currentPoint() const noexcept {
  if (isEmpty()) return std::nullopt;
  return types_.back() == PathElementType::close ? subpathStart_ : points_.back();
}

Rect Path::bounds() const noexcept {
  Rect bounds = RectNull;
  for (auto segments = TQBezierSegmentIteratorMake(*this); const auto segment = segments.next();) {
    bounds = RectUnion(bounds, TQBezierSegmentGetBounds(*segment));
  }
  return bounds;
}

Rect Path::controlPointBounds() const noexcept {
  Rect bounds = RectNull;
  for (const Point point : points_) bounds = RectUnion(bounds, {point, {}});
  return bounds;
}

Path Path::transformed(const AffineTransform& transform) const {
  Path result = *this;
  for (Point& point : result.points_) point = PointApplyAffineTransform(point, transform);
  result.subpathStart_ = PointApplyAffineTransform(subpathStart_, transform);
  return result;
}

void Path::add(PathElementType type, std::span<const Point> points) {
  makeRoom(types_, 1);
  makeRoom(points_, points.size());
  types_.push_back(type);
  points_.insert(points_.end(), points.begin(), points.end());
}

}  // namespace tq
