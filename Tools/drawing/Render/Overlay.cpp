#include "Render/Overlay.h"

#include <algorithm>
#include <numbers>
#include <unordered_map>

#include "Model/Crossings.h"
#include "Model/PlacedNode.h"
#include "Render/CairoSource.h"
#include "Render/Painter.h"

namespace tqdoc {
namespace {

constexpr Color kBounds{0.9, 0.1, 0.4};
constexpr Color kControls{0.1, 0.4, 0.9};
constexpr Color kIntersections{0, 0.6, 0.2};
constexpr Color kArea{0.5, 0, 0.8};

void setInk(cairo_t* cr, const Color& ink) {
  cairo_set_source_rgba(cr, ink.red, ink.green, ink.blue, 0.9);
}

void strokeRect(cairo_t* cr, const tq::Rect& rect) {
  if (tq::RectIsNull(rect)) return;
  cairo_rectangle(cr, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  cairo_stroke(cr);
}

/// Draws lines from every point to its control points, and a dot on each control point.
void paintControls(cairo_t* cr, const tq::Path& outline) {
  setInk(cr, kControls);
  for (auto segments = tq::TQBezierSegmentIteratorMake(outline); auto segment = segments.next();) {
    const auto points = segment->used();
    for (const tq::Point& p : points) cairo_line_to(cr, p.x, p.y);
    cairo_stroke(cr);
    for (const tq::Point& p : points) cairo_rectangle(cr, p.x - 1.5, p.y - 1.5, 3, 3);
    cairo_fill(cr);
  }
}

void paintIntersections(cairo_t* cr, const std::vector<PlacedNode>& nodes) {
  constexpr double kRadius = 3.5;
  setInk(cr, kIntersections);
  for (const tq::Point& p : findCrossings(nodes).points) {
    cairo_arc(cr, p.x, p.y, kRadius, 0, 2 * std::numbers::pi);
    cairo_stroke(cr);
  }
}

/// Draws the outline as a thick line.
void paintMark(cairo_t* cr, const PlacedNode& placed, const Color& color) {
  constexpr double kWidth = 3;
  setInk(cr, color);
  cairo_set_line_width(cr, kWidth);
  if (const auto* shape = tq::objectCast<Shape>(placed.node)) {
    setTransform(cr, placed.transform);
    addPath(cr, shape->path());
    setTransform(cr, tq::AffineTransformIdentity);
    cairo_stroke(cr);
  } else {
    strokeRect(cr, outlineBounds(placed));
  }
  cairo_set_line_width(cr, 1);
}

}  // namespace

void paintOverlay(cairo_t* cr, const Node& root, const tq::AffineTransform& parent,
                  const Overlay& overlay) {
  const bool marksNodes = overlay.bounds || overlay.controls || !overlay.marks.empty();
  std::vector<PlacedNode> nodes;
  if (marksNodes || overlay.intersections) nodes = placedNodes(root, parent);
  std::unordered_map<const Node*, Color> marks;
  for (const Mark& mark : overlay.marks) marks.try_emplace(mark.node, mark.color);
  setTransform(cr, tq::AffineTransformIdentity);
  cairo_set_line_width(cr, 1);
  cairo_set_dash(cr, nullptr, 0, 0);
  cairo_new_path(cr);
  for (const PlacedNode& placed : nodes) {
    const auto* shape = tq::objectCast<Shape>(placed.node);
    if (overlay.controls && shape != nullptr) {
      paintControls(cr, shape->path().outline(placed.transform));
    }
    if (overlay.bounds) {
      setInk(cr, kBounds);
      strokeRect(cr, outlineBounds(placed));
    }
    const auto mark = marks.find(placed.node);
    if (mark != marks.end()) paintMark(cr, placed, mark->second);
  }
  if (overlay.intersections) paintIntersections(cr, nodes);
  if (overlay.area) {
    setInk(cr, kArea);
    cairo_set_line_width(cr, 2);
    strokeRect(cr, grown(tq::RectApplyAffineTransform(*overlay.area, parent), 4));
  }
}

}  // namespace tqdoc
