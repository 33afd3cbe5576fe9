#pragma once

/// @file SvgFilter.h
/// Reads filters.

#include <functional>

#include <pugixml.hpp>

#include "Model/Filter.h"
#include "Svg/SvgContext.h"
#include "Svg/SvgStyleSheet.h"

namespace tqdoc {

/// Returns the filter of a node with this style, or null if it has none. Supported are the
/// primitives that FilterStep lists, and feDropShadow, which becomes several steps. A missing
/// filter, and one with other primitives, counts as an ignored feature and has no effect. Inputs
/// from the background and from paints count, too, and are transparent.
/// @param bounds    of the node, without strokes, in its own coordinates; called when needed
/// @param viewport  of the node
[[nodiscard]] tq::Ref<Filter> readFilter(SvgContext& context, SvgStyleSheet& sheet,
                                         const Style& style,
                                         const std::function<tq::Rect()>& bounds,
                                         Viewport viewport);

/// Returns the rect of x, y, width and height in the coordinates of the user. If `unitsAttribute`
/// is absent or "objectBoundingBox", they are fractions of `bounds`. The default is the bounds or
/// the viewport, enlarged by a tenth on each side. The rect is empty if the bounds are.
[[nodiscard]] tq::Rect regionOf(SvgContext& context, pugi::xml_node node,
                                const char* unitsAttribute, const tq::Rect& bounds,
                                Viewport viewport);

/// Returns the transform from fractions of `bounds` to its coordinates.
[[nodiscard]] tq::AffineTransform unitTransform(const tq::Rect& bounds) noexcept;

}  // namespace tqdoc
