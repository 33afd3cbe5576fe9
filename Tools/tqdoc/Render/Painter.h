#pragma once

/// @file Painter.h
/// The model drawn with cairo.

#include <cairo.h>

#include "Model/Node.h"

namespace tqdoc {

/// Draws nodes.
class Painter {
 public:
  /// Nodes laid down as a whole nest this deep; translucency and clips further inside are not
  /// drawn, since each takes a layer as large as the image.
  static constexpr int kLayerLimit = 24;

  explicit Painter(cairo_t* context) noexcept : cr_(context) {}

  /// @param parent  from the coordinates around the node to pixels
  void paint(const Node& node, const tq::AffineTransform& parent);

 private:
  void paintAsLayer(const Node& node, const tq::AffineTransform& transform);
  void paintContent(const Node& node, const tq::AffineTransform& transform);
  void paintShape(const Shape& shape, const tq::AffineTransform& transform);
  void paintPicture(const Picture& picture, const tq::AffineTransform& transform);

  cairo_t* cr_;
  int layers_ = 0;
  bool silhouette_ = false;  // outlines are filled, whatever their style, to clip with
};

/// Makes `path` the current path, in the coordinates that are set.
void addPath(cairo_t* context, const PathData& path);

}  // namespace tqdoc
