#include "Render/Overlay.h"

#include "Model/Document.h"
#include "Render/CairoSource.h"
#include "Render/Painter.h"

namespace tqdoc {
namespace {

void paintBounds(cairo_t* cr, const tq::Rect& bounds) {
  if (tq::RectIsNull(bounds)) return;
  cairo_set_source_rgba(cr, 0.9, 0.1, 0.4, 0.9);
  cairo_rectangle(cr, bounds.origin.x, bounds.origin.y, bounds.size.width, bounds.size.height);
  cairo_stroke(cr);
}

void paintControlPolygon(cairo_t* cr, const PathData& path, const tq::AffineTransform& transform) {
  cairo_set_source_rgba(cr, 0.1, 0.4, 0.9, 0.9);
  path.forEach([&](char step, tq::Point* points) {
    for (int i = 0; i < PathData::pointsOf(step); ++i) {
      const tq::Point p = tq::PointApplyAffineTransform(points[i], transform);
      step == 'M' ? cairo_move_to(cr, p.x, p.y) : cairo_line_to(cr, p.x, p.y);
    }
    if (step == 'Z') cairo_close_path(cr);
  });
  cairo_stroke(cr);
}

}  // namespace

void paintOverlay(cairo_t* cr, const Node& node, const tq::AffineTransform& parent,
                  Overlay overlay) {
  if (node.traits().hidden) return;
  const auto transform = tq::AffineTransformConcat(node.traits().transform, parent);
  if (const auto* group = tq::objectCast<Group>(&node)) {
    for (std::size_t i = 0; i < group->count(); ++i) {
      paintOverlay(cr, group->child(i), transform, overlay);
    }
    return;
  }
  setTransform(cr, tq::AffineTransformIdentity);
  cairo_set_line_width(cr, 1);
  cairo_set_dash(cr, nullptr, 0, 0);
  cairo_new_path(cr);
  if (overlay.bounds) paintBounds(cr, tightBounds(node, parent));
  const auto* shape = tq::objectCast<Shape>(&node);
  if (overlay.controlPolygons && shape != nullptr)
    paintControlPolygon(cr, shape->path(), transform);
}

}  // namespace tqdoc
