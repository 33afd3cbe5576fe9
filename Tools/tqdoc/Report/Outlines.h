#pragma once

/// @file Outlines.h
/// Where the nodes of a drawing are in a picture of it.

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// The outline of a node.
struct Outline {
  std::string path;  ///< the value of an SVG path's d attribute
  tq::Rect bounds;
};

/// Finds the visible outlines of nodes, in pixels. Keeps pointers: the document must outlive it.
class Outlines {
 public:
  /// An outline of more steps than this is replaced by its bounds.
  static constexpr std::size_t kMostSteps = 2'000;

  /// @param toPixels  from the coordinates of the drawing
  Outlines(const Document& document, const tq::AffineTransform& toPixels);

  /// Returns the outlines of all shapes in a node of the document; for a clip or a mask, those of
  /// the node that it covers. No value if nothing is visible.
  [[nodiscard]] std::optional<Outline> of(const Node& node) const;

 private:
  struct Leaf {
    const Node* node;
    tq::AffineTransform parent;
  };
  struct Range {
    std::size_t first, last;
  };

  void add(const Node& node, const tq::AffineTransform& parent);
  void addCover(const Node& cover, Range covered);

  std::vector<Leaf> leaves_;
  std::unordered_map<const Node*, Range> ranges_;  // of leaves, for each visible node
};

}  // namespace tqdoc
