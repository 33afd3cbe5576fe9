#pragma once

/// @file InkBounds.h
/// Bounds of what nodes draw, with strokes and filters.

#include "Model/Node.h"

namespace tqdoc {

/// Returns a rect around everything that a node draws, in pixels; the null rect if it draws
/// nothing. It may be larger than needed: curves count with their control points, strokes with the
/// longest possible joins, and clips and masks of the node are ignored.
/// @param transform  from the node's own coordinates to pixels
[[nodiscard]] tq::Rect inkBounds(const Node& node, const tq::AffineTransform& transform);

/// Returns the largest factor by which a transform lengthens a vector.
[[nodiscard]] double largestScale(const tq::AffineTransform& transform);

}  // namespace tqdoc
