#pragma once

/// @file PlacedNode.h
/// A drawing's shapes and pictures without the groups around them.

#include <string>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// A shape or a picture and where it stands. Lends the node: the document has to stay.
struct PlacedNode {
  /// Something that hides what lies outside of it.
  struct Clip {
    const Node* node;
    tq::AffineTransform parent;  ///< from the coordinates around the node to the drawing's
  };

  const Node* node;
  std::string place;              ///< such as "root/1/0 (eye)"
  tq::AffineTransform transform;  ///< from the node's coordinates to the drawing's
  std::vector<Clip> clips;        ///< its own and those of the groups around it
};

/// Those of `node` and all within it in drawing order, the bottom one first; hidden ones left out.
[[nodiscard]] std::vector<PlacedNode> placedNodes(const Node& node,
                                                  const tq::AffineTransform& parent = {});

/// Smallest rect around its outline or frame in the drawing; the null rect when nothing is drawn.
[[nodiscard]] tq::Rect outlineBounds(const PlacedNode& placed);

/// `rect` with `margin` more on every side.
[[nodiscard]] tq::Rect grown(const tq::Rect& rect, double margin);

}  // namespace tqdoc
