#pragma once

/// @file HitIndex.h
/// Finds what is at a place of a drawing.

#include <cstddef>
#include <vector>

#include "Model/PlacedNode.h"

namespace tqdoc {

/// Finds shapes, pictures and texts: candidates by an R-tree of their bounds, then by exact tests.
/// Keeps pointers: the document must outlive it. Queries may run on several threads at once.
class HitIndex {
 public:
  explicit HitIndex(const Document& document);

  /// Returns what paints a part of the closed `area`, in the coordinates of the drawing, topmost
  /// first. A rect of size 0 means a point.
  ///
  /// A shape paints its fill, and everything within half the stroke width of a stroked outline, as
  /// if caps and joins were round and dashes solid. Under a non-uniform scale, the mean width
  /// counts. A picture paints its frame, a text its glyphs, a shape its markers, too. The clips and
  /// masks of a node must cover a part of the area, too. Filters are ignored, and patterns count as
  /// plain paint. Curves are approximated to a millionth of their extent.
  [[nodiscard]] std::vector<const PlacedNode*> hits(const tq::Rect& area) const;

 private:
  std::vector<PlacedNode> nodes_;
  tq::Ref<tq::RTree<std::size_t>> tree_;
};

/// Returns true if `p` is in the fill of `path`, with open subpaths closed. A point on the border
/// may be inside or outside. If two fills share a border, a point on it is in exactly one of them.
[[nodiscard]] bool fillContains(const tq::Path& path, tq::Point p, bool evenOdd);

/// Returns true if a point of `segment` is within `distance` of the closed `area`.
[[nodiscard]] bool comesWithin(const tq::TQBezierSegment& segment, double distance,
                               const tq::Rect& area);

}  // namespace tqdoc
