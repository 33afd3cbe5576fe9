#pragma once

/// @file SvgPattern.h
/// Reads patterns.

#include <functional>

#include <pugixml.hpp>

#include "Model/Pattern.h"
#include "Svg/SvgContext.h"
#include "Svg/SvgStyle.h"

namespace tqdoc {

/// Reads the children of an element that is drawn elsewhere than in its place.
using ReadContent = std::function<tq::Ref<tq::Array>(pugi::xml_node node, Viewport viewport)>;

/// Returns the pattern for an outline with these bounds, or null if it has no tile or no content.
/// Patterns inherit attributes and content along their references.
/// @param bounds    of the outline, without its stroke
/// @param viewport  of the outline
[[nodiscard]] tq::Ref<Pattern> readPattern(SvgContext& context, pugi::xml_node node,
                                           const tq::Rect& bounds, Viewport viewport,
                                           const ReadContent& readContent);

}  // namespace tqdoc
