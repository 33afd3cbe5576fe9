#pragma once

/// @file Overlay.h
/// Draws bounds, control points, intersections and marks.

#include <cairo.h>

#include "Model/Node.h"
#include "Render/Canvas.h"

namespace tqdoc {

/// Draws what `overlay` selects, for `root` and its descendants.
/// @param parent  from the drawing's coordinates to pixels
void paintOverlay(cairo_t* context, const Node& root, const tq::AffineTransform& parent,
                  const Overlay& overlay);

}  // namespace tqdoc
