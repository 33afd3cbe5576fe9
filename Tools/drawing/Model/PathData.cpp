#include "Model/PathData.h"

#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

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
  const auto steps = decoder.decodeObjectForKey<tq::String>("steps");
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

tq::Path PathData::outline(const tq::AffineTransform& transform) const {
  tq::Path path;
  forEach([&](char step, tq::Point* points) {
    for (int i = 0; i < pointsOf(step); ++i) {
      points[i] = tq::PointApplyAffineTransform(points[i], transform);
    }
    switch (step) {
      case 'M':
        return path.moveTo(points[0]);
      case 'L':
        return path.lineTo(points[0]);
      case 'C':
        return path.cubicTo(points[0], points[1], points[2]);
      default:
        return path.close();
    }
  });
  return path;
}

tq::Rect PathData::tightBounds(const tq::AffineTransform& transform) const {
  return outline(transform).bounds();
}

bool PathData::isEqual(const tq::Object& other) const {
  const auto* path = tq::objectCast<PathData>(&other);
  return path != nullptr && path->steps_ == steps_ && path->coordinates_ == coordinates_;
}

}  // namespace tqdoc
