#pragma once

/// @file HitIndex.h
/// What lies where in a drawing.

#include <cstddef>
#include <vector>

#include "Model/PlacedNode.h"

namespace tqdoc {

/// Finds shapes and pictures by place: candidates through an R-tree of their bounds, then exactly.
/// Lends from the document, which has to stay. Any number of threads may ask at once.
class HitIndex {
 public:
  explicit HitIndex(const Document& document);

  /// What has ink in the closed `area` of the drawing's coordinates, the top one first. A rect of
  /// size 0 asks for a point.
  ///
  /// A shape has ink where its fill is and within half the stroke's width of a stroked outline, as
  /// if caps and joins were round and nothing dashed; the width of a stroke under an uneven scale
  /// counts as its mean. A picture fills its frame. What clips a node must cover some of the area,
  /// too. Curves are followed to a millionth of their extent.
  [[nodiscard]] std::vector<const PlacedNode*> hits(const tq::Rect& area) const;

 private:
  std::vector<PlacedNode> nodes_;
  tq::Ref<tq::RTree<std::size_t>> tree_;
};

/// Whether `p` lies in the fill of `path`, open subpaths closed. On the border either may be said,
/// but two fills with a common border share it out: a point is in one of them only.
[[nodiscard]] bool fillContains(const tq::Path& path, tq::Point p, bool evenOdd);

/// Whether `segment` has a point within `distance` of the closed `area`.
[[nodiscard]] bool comesWithin(const tq::TQBezierSegment& segment, double distance,
                               const tq::Rect& area);

}  // namespace tqdoc
