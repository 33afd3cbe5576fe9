#pragma once

/// @file Overlay.h
/// A drawing's geometry made visible.

#include <cairo.h>

#include "Model/Node.h"
#include "Render/Canvas.h"

namespace tqdoc {

/// Bounds and control polygons of a node and all within it, in lines one pixel wide.
/// @param parent  from the coordinates around the node to pixels
void paintOverlay(cairo_t* context, const Node& node, const tq::AffineTransform& parent,
                  Overlay overlay);

}  // namespace tqdoc
