#pragma once

/// @file Snapping.h
/// Snapping to a grid and to crossings of outlines.

#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace sketch {

/// What a dragged selection snaps to, in the coordinates of the drawing.
struct SnapTargets {
  double gridStep = 0;               ///< 0: no grid
  std::vector<tq::Point> crossings;  ///< of other outlines
  double reach = 0;                  ///< the largest distance to a crossing
};

/// Returns the offset near `offset` with which `bounds` snaps: its nearest corner, midpoint or
/// centre to a crossing within reach, otherwise its top left corner to the grid.
[[nodiscard]] tq::Vector snapped(tq::Vector offset, const tq::Rect& bounds,
                                 const SnapTargets& targets);

}  // namespace sketch
