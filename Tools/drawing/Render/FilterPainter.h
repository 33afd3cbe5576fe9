#pragma once

/// @file FilterPainter.h
/// Applies filters to images.

#include "Model/Filter.h"
#include "Render/Layer.h"

namespace tqdoc {

/// Returns the result of a filter, an image for `area`. Null if its images would take more than 2
/// GiB at once.
/// @param source     what the node draws, an image for `area`; it is changed
/// @param area       the visible pixels of the filter's region
/// @param transform  from the node's coordinates to pixels. A rotated or skewed blur or offset
/// keeps its length; a rotated blur with two deviations is approximated.
[[nodiscard]] CairoSurface filtered(CairoSurface source, const PixelArea& area,
                                    const Filter& filter, const tq::AffineTransform& transform);

}  // namespace tqdoc
