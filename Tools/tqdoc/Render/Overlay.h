#pragma once

/// @file Overlay.h
/// A drawing's geometry made visible.

#include <cairo.h>

#include "Model/Node.h"
#include "Render/Canvas.h"

namespace tqdoc {

/// What `overlay` asks for of `root` and all within it.
/// @param parent  from the drawing's coordinates to pixels
void paintOverlay(cairo_t* context, const Node& root, const tq::AffineTransform& parent,
                  const Overlay& overlay);

}  // namespace tqdoc
