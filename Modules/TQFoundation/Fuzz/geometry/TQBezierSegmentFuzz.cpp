#include <TQFoundation/geometry/curves/TQBezierSegment.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "../support/Bytes.h"

// Interprets any bytes as two segments, an offset and a polynomial. No operation may trap or loop
// forever. For numbers of ordinary size, splits must join, bounds must contain the curve, and
// intersections must be on the line.

namespace {

using namespace tq;
using fuzz::Bytes;
using fuzz::require;

bool isOrdinary(const TQBezierSegment& segment) {
  const auto points = segment.used();
  return !points.empty() && std::all_of(points.begin(), points.end(), [](Point p) {
    return std::fabs(p.x) < 1e6 && std::fabs(p.y) < 1e6;
  });
}

void checkRoots(const TQPolynomial& polynomial) {
  const TQPolynomialRoots roots = TQPolynomialFindRoots(polynomial);
  require(roots.count >= 0 && roots.count <= 3);
  for (const double root : TQPolynomialRootsFilter(roots, 0, 1, 0)) require(root > 0 && root < 1);
  const TQPolynomialRoots sorted = TQPolynomialRootsSort(roots);
  if (std::none_of(sorted.begin(), sorted.end(), [](double r) { return std::isnan(r); })) {
    require(std::is_sorted(sorted.begin(), sorted.end()));
  }
}

void checkSegment(const TQBezierSegment& segment, double t, double y) {
  TQBezierSegment left, right;
  TQBezierSegmentSplit(segment, t, &left, &right);
  const Rect bounds = TQBezierSegmentGetBounds(segment);
  const TQPolynomialRoots crossings = TQBezierSegmentIntersectionsWithHorizontalLine(segment, y);
  for (const double offset : crossings) require(offset >= 0 && offset <= 1);
  require(std::is_sorted(crossings.begin(), crossings.end()));
  (void)TQBezierSegmentInflectionOffsets(segment);
  (void)TQBezierSegmentLengthSquared(segment);
  (void)TQBezierSegmentTransformForAligningToXAxis(segment);
  if (!isOrdinary(segment)) return;

  constexpr double kRounding = 1e-8;  // for coordinates up to 1e6
  if (std::fabs(t) < 10) require(left.end() == right.start());
  for (int i = 0; i <= 16; ++i) {
    const Point p = TQBezierSegmentPointAtOffset(segment, i / 16.0);
    require(p.x >= RectGetMinX(bounds) - kRounding && p.x <= RectGetMaxX(bounds) + kRounding);
    require(p.y >= RectGetMinY(bounds) - kRounding && p.y <= RectGetMaxY(bounds) + kRounding);
  }
  for (const double offset : crossings) {
    require(std::fabs(TQBezierSegmentPointAtOffset(segment, offset).y - y) < kRounding);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  const auto a = bytes.take<TQBezierSegment>();
  const auto t = bytes.take<double>();
  const auto y = bytes.take<double>();
  const auto b = bytes.take<TQBezierSegment>();
  checkRoots({a.points[0].x, a.points[0].y, a.points[1].x, a.points[1].y});
  checkSegment(a, t, y);
  (void)TQBezierSegmentIntersections(a, b, [&](double s, double u) {
    require(s >= 0 && s <= 1 && u >= 0 && u <= 1);
    const auto refined = TQBezierSegmentRefineIntersection(a, b, {s, u});
    require(refined.a >= 0 && refined.a <= 1 && refined.b >= 0 && refined.b <= 1);
  });
  return 0;
}
