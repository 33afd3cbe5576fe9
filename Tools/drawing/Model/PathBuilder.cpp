#include "Model/PathBuilder.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {

void PathBuilder::add(char step, std::initializer_list<tq::Point> points) {
  steps_ += step;
  for (const tq::Point point : points) {
    coordinates_.push_back(archivable(point.x));
    coordinates_.push_back(archivable(point.y));
    current_ = point;
  }
}

void PathBuilder::begin() {
  if (steps_.empty() || steps_.back() == 'Z') moveTo(current_);
}

void PathBuilder::moveTo(tq::Point to) {
  start_ = to;
  add('M', {to});
}

void PathBuilder::lineTo(tq::Point to) {
  begin();
  add('L', {to});
}

void PathBuilder::cubicTo(tq::Point control1, tq::Point control2, tq::Point to) {
  begin();
  add('C', {control1, control2, to});
}

void PathBuilder::quadTo(tq::Point control, tq::Point to) {
  const auto toward = [&](tq::Point end) {
    return tq::Point{end.x + 2.0 / 3 * (control.x - end.x), end.y + 2.0 / 3 * (control.y - end.y)};
  };
  cubicTo(toward(current_), toward(to), to);
}

void PathBuilder::arcTo(tq::Size radii, double rotationDegrees, bool largeArc, bool sweep,
                        tq::Point to) {
  const tq::Point from = current_;
  if (from == to) return;
  double rx = std::abs(radii.width);
  double ry = std::abs(radii.height);
  if (rx == 0 || ry == 0) return lineTo(to);

  // Half the chord in the axes of the ellipse. The radii must be long enough to span it.
  const double phi = std::fmod(rotationDegrees, 360) * std::numbers::pi / 180;
  const double cosPhi = std::cos(phi);
  const double sinPhi = std::sin(phi);
  const double dx = (from.x - to.x) / 2;
  const double dy = (from.y - to.y) / 2;
  const double x1 = cosPhi * dx + sinPhi * dy;
  const double y1 = -sinPhi * dx + cosPhi * dy;
  const double stretch = std::hypot(x1 / rx, y1 / ry);
  if (stretch > 1) {
    rx *= stretch;
    ry *= stretch;
  }

  // The centre, on the unit circle: u = (x1/rx, y1/ry) is the start, and the centre is at a right
  // angle to it.
  const double ux = x1 / rx;
  const double uy = y1 / ry;
  const double u = std::hypot(ux, uy);
  const double off = (largeArc == sweep ? -1 : 1) * std::sqrt(std::max(0.0, 1 - u * u)) / u;
  const double cx = off * uy;
  const double cy = -off * ux;
  const double start = std::atan2(uy - cy, ux - cx);
  double turn = std::atan2(-uy - cy, -ux - cx) - start;
  if (sweep && turn < 0) turn += 2 * std::numbers::pi;
  if (!sweep && turn > 0) turn -= 2 * std::numbers::pi;
  if (!std::isfinite(turn)) return lineTo(to);

  const tq::Point middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
  const auto place = [&](double x, double y) {  // from the unit circle to the drawing
    const double ex = rx * (x + cx);
    const double ey = ry * (y + cy);
    return tq::Point{cosPhi * ex - sinPhi * ey + middle.x, sinPhi * ex + cosPhi * ey + middle.y};
  };
  const int pieces =
      std::clamp(static_cast<int>(std::ceil(std::abs(turn) / (std::numbers::pi / 2) - 1e-9)), 1, 4);
  const double step = turn / pieces;
  const double reach = 4.0 / 3 * std::tan(step / 4);
  for (int i = 0; i < pieces; ++i) {
    const double a = start + i * step;
    const double b = a + step;
    const tq::Point end = i + 1 == pieces ? to : place(std::cos(b), std::sin(b));
    cubicTo(place(std::cos(a) - reach * std::sin(a), std::sin(a) + reach * std::cos(a)),
            place(std::cos(b) + reach * std::sin(b), std::sin(b) - reach * std::cos(b)), end);
  }
}

void PathBuilder::close() {
  if (steps_.empty() || steps_.back() == 'Z') return;
  steps_ += 'Z';
  current_ = start_;
}

tq::Ref<PathData> PathBuilder::take() {
  auto path = tq::makeRef<PathData>(std::exchange(steps_, {}), std::exchange(coordinates_, {}));
  start_ = current_ = {};
  return path;
}

}  // namespace tqdoc
