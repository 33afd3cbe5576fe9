#include "Render/InkBounds.h"

#include <algorithm>
#include <cmath>

#include "Model/Numbers.h"
#include "Model/PlacedNode.h"

namespace tqdoc {
namespace {

constexpr tq::Rect kAnywhere{-1e9, -1e9, 2e9, 2e9};

[[nodiscard]] tq::Rect shapeBounds(const Shape& shape, const tq::AffineTransform& transform) {
  const tq::Dictionary& style = shape.style();
  for (const char* marker : {"markerStart", "markerMid", "markerEnd"}) {
    if (style.objectForKey(marker) != nullptr) return kAnywhere;  // it may be far from the path
  }
  double left = HUGE_VAL, top = HUGE_VAL, right = -HUGE_VAL, bottom = -HUGE_VAL;
  shape.path().forEach([&](char step, const tq::Point* points) {
    for (int i = 0; i < PathData::pointsOf(step); ++i) {
      const tq::Point p = tq::PointApplyAffineTransform(points[i], transform);
      left = std::min(left, p.x);
      top = std::min(top, p.y);
      right = std::max(right, p.x);
      bottom = std::max(bottom, p.y);
    }
  });
  if (!(left <= right && top <= bottom)) return tq::RectNull;
  double reach = 1;  // antialiasing
  if (style.objectForKey("stroke") != nullptr) {
    constexpr double kSquareCap = 1.5;
    const bool scales = numberIn(style, "nonScalingStroke", 0) == 0;
    reach += numberIn(style, "strokeWidth", 1) / 2 * (scales ? largestScale(transform) : 1) *
             std::max(kSquareCap, numberIn(style, "miterLimit", 4));
  }
  return grown({left, top, right - left, bottom - top}, reach);
}

}  // namespace

tq::Rect inkBounds(const Node& node, const tq::AffineTransform& transform) {
  if (node.traits().hidden) return tq::RectNull;
  if (node.traits().filter) {
    return grown(tq::RectApplyAffineTransform(node.traits().filter->region(), transform), 1);
  }
  if (const auto* shape = tq::objectCast<Shape>(&node)) return shapeBounds(*shape, transform);
  if (const auto* picture = tq::objectCast<Picture>(&node)) {
    return grown(tq::RectApplyAffineTransform(picture->frame(), transform), 1);
  }
  const auto* group = tq::objectCast<Group>(&node);
  if (group == nullptr) return kAnywhere;
  tq::Rect bounds = tq::RectNull;
  for (std::size_t i = 0; i < group->count(); ++i) {
    const Node& child = group->child(i);
    bounds = tq::RectUnion(
        bounds, inkBounds(child, tq::AffineTransformConcat(child.traits().transform, transform)));
  }
  return bounds;
}

double largestScale(const tq::AffineTransform& t) {
  return (std::hypot(t.a + t.d, t.b - t.c) + std::hypot(t.a - t.d, t.b + t.c)) / 2;
}

}  // namespace tqdoc
