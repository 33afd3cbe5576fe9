#pragma once

/// @file CanvasView.h
/// The widget that shows the drawing, and the gestures of the mouse on it.

#include <variant>

#include "Editor.h"
#include "Snapping.h"
#include "Toolkit.h"

namespace sketch {

/// A click selects the topmost node at the pointer; with Shift it is added or removed. Dragging a
/// node moves the selection, which snaps. Dragging the background selects what a rubber band meets.
/// Escape ends a gesture without effect. Main thread.
class CanvasView {
 public:
  /// `editor` must outlive the view.
  explicit CanvasView(Editor& editor);

  [[nodiscard]] GtkWidget* widget() const noexcept { return widget_; }
  /// Draws again, in the next pass of the main loop.
  void redraw() { gtk_widget_queue_draw(widget_); }
  void cancelGesture();

 private:
  /// The selection follows the pointer.
  struct Move {
    tq::Point start;
    tq::Rect bounds;  ///< of the selection, at the start
    SnapTargets targets;
    tq::Vector offset;
  };
  /// A rubber band between two corners.
  struct Band {
    tq::Point start, end;
  };

  void press(const GdkEventButton& event);
  void drag(tq::Point to);
  void release();

  [[nodiscard]] Move moveFrom(tq::Point start);
  [[nodiscard]] const tqdoc::PlacedNode* nodeAt(tq::Point point);
  [[nodiscard]] tq::AffineTransform placement() const;
  [[nodiscard]] tq::Point toDrawing(double x, double y) const;
  /// Returns the length in the drawing of a number of pixels.
  [[nodiscard]] double lengthOf(double pixels) const;

  void draw(cairo_t* cr);
  void drawPage(cairo_t* cr, const tq::AffineTransform& placement) const;
  void drawBand(cairo_t* cr, const tq::AffineTransform& placement) const;

  Editor& editor_;
  GtkWidget* const widget_;
  std::variant<std::monostate, Move, Band> gesture_;
};

}  // namespace sketch
