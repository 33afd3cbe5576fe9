#pragma once

/// @file PlacedNode.h
/// The shapes, pictures and texts of a drawing, with the transforms and clips of their groups.

#include <cstddef>
#include <string>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// The indexes that lead from the root to a node.
using NodePath = std::vector<std::size_t>;

/// A shape, a picture or a text with its place. Keeps a pointer: the document must outlive it.
struct PlacedNode {
  /// A clip or a Mask: hides everything outside.
  struct Clip {
    const Node* node;
    tq::AffineTransform parent;  ///< from the coordinates around the node to the drawing's
  };

  const Node* node;
  NodePath path;
  std::string place;              ///< such as "root/1/0 (eye)"
  tq::AffineTransform transform;  ///< from the node's coordinates to the drawing's
  std::vector<Clip> clips;        ///< its own and those of its groups, with masks
};

/// Returns the visible shapes, pictures and texts of `node` and its descendants, bottom first.
[[nodiscard]] std::vector<PlacedNode> placedNodes(const Node& node,
                                                  const tq::AffineTransform& parent = {});

/// Returns the smallest rect around its outlines or frame in the drawing; null if nothing is drawn.
[[nodiscard]] tq::Rect outlineBounds(const PlacedNode& placed);

/// Returns `rect` enlarged by `margin` on every side.
[[nodiscard]] tq::Rect grown(const tq::Rect& rect, double margin);

}  // namespace tqdoc
