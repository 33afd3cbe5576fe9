#include "Model/PathData.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

/// Grows as values are put in; empty until then.
struct Interval {
  double min = std::numeric_limits<double>::infinity();
  double max = -min;

  void add(double value) {
    min = std::min(min, value);
    max = std::max(max, value);
  }

  /// A cubic's ends are in already; adds the values where it turns, the roots of its derivative
  /// a·t² + b·t + c (up to the factor 3).
  void addTurns(double p0, double p1, double p2, double p3) {
    if (std::min(p1, p2) >= min && std::max(p1, p2) <= max) return;
    const double a = p3 - p0 + 3 * (p1 - p2);
    const double b = 2 * (p0 - 2 * p1 + p2);
    const double c = p1 - p0;
    // The form of the quadratic's roots that does not cancel; with a = 0 one of them is infinite.
    const double q = -0.5 * (b + std::copysign(std::sqrt(std::max(0.0, b * b - 4 * a * c)), b));
    if (b * b - 4 * a * c < 0) return;
    for (const double t : {q / a, c / q}) {
      if (!(t > 0 && t < 1)) continue;
      const double s = 1 - t;
      add(s * s * s * p0 + 3 * s * s * t * p1 + 3 * s * t * t * p2 + t * t * t * p3);
    }
  }
};

[[nodiscard]] bool fits(std::string_view steps, std::size_t coordinateCount) {
  if (!steps.empty() && steps.front() != 'M') return false;
  std::size_t wanted = 0;
  for (const char step : steps) {
    if (PathData::pointsOf(step) < 0) return false;
    wanted += 2 * static_cast<std::size_t>(PathData::pointsOf(step));
  }
  return wanted == coordinateCount;
}

}  // namespace

PathData::PathData(tq::TQJSONDecoder& decoder) {
  const auto steps = tq::refCast<tq::String>(decoder.decodeObjectForKey("steps"));
  auto coordinates = decodeNumbers(decoder, "coordinates");
  if (!steps || !coordinates || !fits(steps->view(), coordinates->size())) {
    refuse(decoder, "a path's steps and coordinates do not fit each other");
    return;
  }
  steps_ = steps->view();
  coordinates_ = *std::move(coordinates);
}

void PathData::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeObject(tq::String::of(steps_), "steps");
  encoder.encodeObject(tq::Array::arrayWithNumbers(coordinates()), "coordinates");
}

tq::Rect PathData::tightBounds(const tq::AffineTransform& transform) const {
  Interval x, y;
  tq::Point current;
  forEach([&](char step, tq::Point* points) {
    const int count = pointsOf(step);
    for (int i = 0; i < count; ++i) points[i] = tq::PointApplyAffineTransform(points[i], transform);
    if (count == 0) return;
    const tq::Point last = points[count - 1];
    x.add(last.x);
    y.add(last.y);
    if (step == 'C') {
      x.addTurns(current.x, points[0].x, points[1].x, last.x);
      y.addTurns(current.y, points[0].y, points[1].y, last.y);
    }
    current = last;
  });
  if (!(x.min <= x.max && y.min <= y.max)) return tq::RectNull;
  return {x.min, y.min, x.max - x.min, y.max - y.min};
}

bool PathData::isEqual(const tq::Object& other) const {
  const auto* path = tq::objectCast<PathData>(&other);
  return path != nullptr && path->steps_ == steps_ && path->coordinates_ == coordinates_;
}

}  // namespace tqdoc
