#pragma once

/// @file Edits.h
/// Edits of a drawing: functions from one version to the next.

#include <set>
#include <string_view>

#include "Model/PlacedNode.h"

namespace sketch {

/// Shapes, pictures and texts, by their paths.
using Selection = std::set<tqdoc::NodePath>;

/// A version of a drawing and what is selected in it. A value: versions share the nodes that are
/// equal, so a copy costs nothing.
struct Drawing {
  tq::Ref<tqdoc::Document> document;
  Selection selection;
};

// Each edits the selected nodes and returns the new version, in which the results are selected.

/// Moves by `offset`, in the coordinates of the drawing.
[[nodiscard]] Drawing moved(const Drawing& drawing, tq::Vector offset);
[[nodiscard]] Drawing removed(const Drawing& drawing);
/// Adds a moved copy of each node, on top of its group. The copies get names of their own and are
/// selected.
[[nodiscard]] Drawing duplicated(const Drawing& drawing, tq::Vector offset);
/// Sets the fill of shapes and texts, or the stroke of those that have only a stroke.
/// @param color  "#rrggbb"
[[nodiscard]] Drawing recoloured(const Drawing& drawing, std::string_view color);

}  // namespace sketch
