#include "Model/Gradient.h"

#include <algorithm>
#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

constexpr std::size_t kNumbersPerStop = 5;

}  // namespace

Gradient::Gradient(const GradientGeometry& geometry, std::vector<GradientStop> stops)
    : geometry_(geometry), stops_(std::move(stops)) {
  geometry_.start = archivable(geometry.start);
  geometry_.end = archivable(geometry.end);
  geometry_.radius = archivable(geometry.radius);
  geometry_.focalRadius = archivable(geometry.focalRadius);
  geometry_.transform = archivable(geometry.transform);
  for (GradientStop& stop : stops_) {
    for (double* number : {&stop.offset, &stop.red, &stop.green, &stop.blue, &stop.alpha}) {
      *number = archivable(*number);
    }
  }
}

Gradient::Gradient(tq::TQJSONDecoder& decoder) {
  geometry_.radial = decoder.decodeBoolForKey("radial", false);
  geometry_.start = decoder.decodePointForKey("start");
  geometry_.end = decoder.decodePointForKey("end");
  geometry_.radius = decoder.decodeDoubleForKey("radius", 0);
  geometry_.focalRadius = decoder.decodeDoubleForKey("focalRadius", 0);
  geometry_.transform = decodeTransform(decoder, "transform");
  const std::int64_t spread = decoder.decodeIntegerForKey("spread", 0);
  const auto numbers = decodeNumbers(decoder, "stops");
  if (spread < 0 || spread > 2 || !numbers || numbers->size() % kNumbersPerStop != 0) {
    refuse(decoder, "a gradient has an invalid spread or invalid stops");
    return;
  }
  geometry_.spread = static_cast<Spread>(spread);
  for (std::size_t i = 0; i < numbers->size(); i += kNumbersPerStop) {
    const double* const n = numbers->data() + i;
    stops_.push_back({n[0], n[1], n[2], n[3], n[4]});
  }
}

void Gradient::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeBool(geometry_.radial, "radial");
  encoder.encodePoint(geometry_.start, "start");
  encoder.encodePoint(geometry_.end, "end");
  if (geometry_.radial) encoder.encodeDouble(geometry_.radius, "radius");
  if (geometry_.focalRadius != 0) encoder.encodeDouble(geometry_.focalRadius, "focalRadius");
  encodeTransform(encoder, geometry_.transform, "transform");
  if (geometry_.spread != Spread::pad) {
    encoder.encodeInteger(static_cast<std::int64_t>(geometry_.spread), "spread");
  }
  std::vector<double> numbers;
  numbers.reserve(stops_.size() * kNumbersPerStop);
  for (const GradientStop& stop : stops_) {
    numbers.insert(numbers.end(), {stop.offset, stop.red, stop.green, stop.blue, stop.alpha});
  }
  encoder.encodeObject(tq::Array::arrayWithNumbers(std::span<const double>(numbers)), "stops");
}

bool Gradient::isEqual(const tq::Object& other) const {
  const auto* gradient = tq::objectCast<Gradient>(&other);
  return gradient != nullptr && gradient->geometry_ == geometry_ &&
         std::ranges::equal(gradient->stops_, stops_);
}

}  // namespace tqdoc
