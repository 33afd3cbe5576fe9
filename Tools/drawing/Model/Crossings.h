#pragma once

/// @file Crossings.h
/// Intersections of the outlines of a drawing.

#include <cstddef>
#include <vector>

#include "Model/PlacedNode.h"

namespace tqdoc {

struct Crossings {
  /// The maximum number of tested pairs of segments. Only hostile drawings reach it.
  static constexpr std::size_t kPairLimit = 100'000;

  std::vector<tq::Point> points;  ///< in the drawing's coordinates, in no particular order
  bool complete = true;           ///< false if the limit stopped the search
};

/// Returns all intersections of the nodes' segments, without the joints within one outline.
[[nodiscard]] Crossings findCrossings(const std::vector<PlacedNode>& nodes);

}  // namespace tqdoc
