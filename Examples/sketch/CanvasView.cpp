#include "CanvasView.h"

#include <algorithm>
#include <vector>

#include "Model/Crossings.h"
#include "Render/CairoSource.h"
#include "Render/Overlay.h"
#include "Render/Painter.h"

namespace sketch {
namespace {

constexpr double kMargin = 16;           // around the page, in pixels
constexpr double kPickingReach = 2;      // from the pointer, in pixels
constexpr double kSnappingReach = 6;     // to a crossing, in pixels
constexpr double kClosestGridLines = 4;  // closer ones are not drawn, in pixels
constexpr tqdoc::Color kMarkColor{0.1, 0.45, 0.9};

void setLine(cairo_t* cr, double opacity) {
  tqdoc::setTransform(cr, tq::AffineTransformIdentity);
  cairo_set_source_rgba(cr, kMarkColor.red, kMarkColor.green, kMarkColor.blue, opacity);
  cairo_set_line_width(cr, 1);
}

/// Returns the transform from the coordinates of the widget to those of the pixels.
[[nodiscard]] tq::AffineTransform toPixels(cairo_t* cr) {
  cairo_matrix_t m;
  cairo_get_matrix(cr, &m);
  return {m.xx, m.yx, m.xy, m.yy, m.x0, m.y0};
}

void addRect(cairo_t* cr, const tq::Rect& rect) {
  cairo_rectangle(cr, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

}  // namespace

CanvasView::CanvasView(Editor& editor) : editor_(editor), widget_(gtk_drawing_area_new()) {
  gtk_widget_add_events(widget_,
                        GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK | GDK_POINTER_MOTION_MASK);
  gtk_widget_set_can_focus(widget_, TRUE);
  onSignal<gboolean, cairo_t*>(widget_, "draw", [this](cairo_t* cr) { return draw(cr), TRUE; });
  onSignal<gboolean, GdkEventButton*>(
      widget_, "button-press-event", [this](GdkEventButton* event) { return press(*event), TRUE; });
  onSignal<gboolean, GdkEventMotion*>(
      widget_, "motion-notify-event",
      [this](GdkEventMotion* event) { return drag(toDrawing(event->x, event->y)), TRUE; });
  onSignal<gboolean, GdkEventButton*>(widget_, "button-release-event",
                                      [this](GdkEventButton* event) {
                                        if (event->button == GDK_BUTTON_PRIMARY) release();
                                        return TRUE;
                                      });
}

void CanvasView::press(const GdkEventButton& event) {
  if (event.button != GDK_BUTTON_PRIMARY || event.type != GDK_BUTTON_PRESS) return;
  gtk_widget_grab_focus(widget_);
  const tq::Point point = toDrawing(event.x, event.y);
  const bool extends = (event.state & GDK_SHIFT_MASK) != 0;
  const tqdoc::PlacedNode* const hit = nodeAt(point);
  tq::TQLogging::applicationLog().log(tq::LogLevel::debug, "pressed at {}, {}: {}", point.x,
                                      point.y, hit != nullptr ? hit->place : "nothing");
  Selection selection = editor_.drawing().selection;
  if (hit == nullptr) {
    if (!extends) editor_.select({});
    gesture_ = Band{point, point};
    return;
  }
  const bool wasSelected = selection.contains(hit->path);
  if (extends) {
    wasSelected ? void(selection.erase(hit->path)) : void(selection.insert(hit->path));
  } else if (!wasSelected) {
    selection = {hit->path};
  }
  editor_.select(std::move(selection));
  if (!editor_.drawing().selection.empty()) gesture_ = moveFrom(point);
}

void CanvasView::drag(tq::Point to) {
  if (auto* move = std::get_if<Move>(&gesture_)) {
    move->offset = snapped(to - move->start, move->bounds, move->targets);
    redraw();
  } else if (auto* band = std::get_if<Band>(&gesture_)) {
    band->end = to;
    redraw();
  }
}

void CanvasView::release() {
  const auto gesture = std::exchange(gesture_, {});
  if (const auto* move = std::get_if<Move>(&gesture)) {
    if (move->offset != tq::Vector{}) editor_.edit("Move", moved(editor_.drawing(), move->offset));
  } else if (const auto* band = std::get_if<Band>(&gesture)) {
    if (band->start == band->end) return;
    Selection selection = editor_.drawing().selection;
    for (const auto* node : editor_.index().hits(tq::TQRectFromPoints(band->start, band->end))) {
      selection.insert(node->path);
    }
    editor_.select(std::move(selection));
  }
}

void CanvasView::cancelGesture() {
  gesture_ = {};
  redraw();
}

CanvasView::Move CanvasView::moveFrom(tq::Point start) {
  Move move{start, tq::RectNull, {}, {}};
  std::vector<tqdoc::PlacedNode> others;
  for (tqdoc::PlacedNode& node : tqdoc::placedNodes(editor_.drawing().document->root())) {
    if (editor_.drawing().selection.contains(node.path)) {
      move.bounds = tq::RectUnion(move.bounds, outlineBounds(node));
    } else {
      others.push_back(std::move(node));
    }
  }
  if (options::snapsToGrid.value()) move.targets.gridStep = options::gridStep.value();
  if (options::snapsToCrossings.value()) {
    move.targets.crossings = tqdoc::findCrossings(others).points;
    move.targets.reach = lengthOf(kSnappingReach);
  }
  return move;
}

const tqdoc::PlacedNode* CanvasView::nodeAt(tq::Point point) {
  const double reach = lengthOf(kPickingReach);
  const auto hits = editor_.index().hits(tq::TQRectWithMarginAroundPoint(reach, point));
  return hits.empty() ? nullptr : hits.front();
}

tq::AffineTransform CanvasView::placement() const {
  const double width = gtk_widget_get_allocated_width(widget_);
  const double height = gtk_widget_get_allocated_height(widget_);
  return tqdoc::pagePlacement(
      editor_.drawing().document->page(),
      {kMargin, kMargin, std::max(width - 2 * kMargin, 1.0), std::max(height - 2 * kMargin, 1.0)});
}

tq::Point CanvasView::toDrawing(double x, double y) const {
  return tq::PointApplyAffineTransform({x, y}, tq::AffineTransformInvert(placement()));
}

double CanvasView::lengthOf(double pixels) const {
  return tq::VectorGetLength(toDrawing(pixels, 0) - toDrawing(0, 0));
}

void CanvasView::draw(cairo_t* cr) {
  const std::uint64_t start = tq::TQTimeNow();
  const auto placed = tq::AffineTransformConcat(placement(), toPixels(cr));
  const auto* move = std::get_if<Move>(&gesture_);
  const Drawing shown = move ? moved(editor_.drawing(), move->offset) : editor_.drawing();
  drawPage(cr, placed);
  tqdoc::Painter(cr).paintDrawing(shown.document->root(), placed);

  tqdoc::Overlay overlay;
  for (const tqdoc::PlacedNode& node : tqdoc::placedNodes(shown.document->root())) {
    if (shown.selection.contains(node.path)) overlay.marks.push_back({node.node, kMarkColor});
  }
  paintOverlay(cr, shown.document->root(), placed, overlay);
  drawBand(cr, placed);
  tq::TQLogging::renderingLog().log(
      tq::LogLevel::debug, "drew {} nodes in {} ms", shown.document->shapeCount(),
      1e3 * tq::TQTimeIntervalsForDuration(tq::TQDurationSince(start)));
}

void CanvasView::drawPage(cairo_t* cr, const tq::AffineTransform& placement) const {
  const tq::Rect box = editor_.drawing().document->page().viewBox;
  const tq::Rect page = tq::RectApplyAffineTransform(box, placement);
  tqdoc::setTransform(cr, tq::AffineTransformIdentity);
  cairo_set_source_rgb(cr, 0.85, 0.85, 0.86);
  cairo_paint(cr);
  addRect(cr, page);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_fill(cr);

  const double step = options::gridStep.value();
  if (!options::showsGrid.value() || !(step >= lengthOf(kClosestGridLines))) return;
  setLine(cr, 0.2);
  const auto line = [&](tq::Point from, tq::Point to) {
    from = tq::PointApplyAffineTransform(from, placement);
    to = tq::PointApplyAffineTransform(to, placement);
    cairo_move_to(cr, from.x, from.y);
    cairo_line_to(cr, to.x, to.y);
  };
  const tq::Point end{tq::RectGetMaxX(box), tq::RectGetMaxY(box)};
  const tq::Point first = tq::Rounder<double>(step).round(box.origin);
  for (double x = first.x; x <= end.x; x += step) line({x, box.origin.y}, {x, end.y});
  for (double y = first.y; y <= end.y; y += step) line({box.origin.x, y}, {end.x, y});
  cairo_stroke(cr);
}

void CanvasView::drawBand(cairo_t* cr, const tq::AffineTransform& placement) const {
  const auto* band = std::get_if<Band>(&gesture_);
  if (band == nullptr) return;
  setLine(cr, 0.9);
  addRect(cr,
          tq::RectApplyAffineTransform(tq::TQRectFromPoints(band->start, band->end), placement));
  cairo_stroke_preserve(cr);
  setLine(cr, 0.1);
  cairo_fill(cr);
}

}  // namespace sketch
