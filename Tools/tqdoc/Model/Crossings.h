#pragma once

/// @file Crossings.h
/// Where a drawing's outlines cross and touch each other and themselves.

#include <cstddef>
#include <vector>

#include "Model/PlacedNode.h"

namespace tqdoc {

struct Crossings {
  /// Pairs of segments that are looked at, at the most; all but hostile drawings stay far below.
  static constexpr std::size_t kPairLimit = 100'000;

  std::vector<tq::Point> points;  ///< in the drawing's coordinates, in no particular order
  bool complete = true;           ///< false when a limit cut the search short
};

/// All crossings of the nodes' segments; where two segments of one outline are joined is none.
[[nodiscard]] Crossings findCrossings(const std::vector<PlacedNode>& nodes);

}  // namespace tqdoc
