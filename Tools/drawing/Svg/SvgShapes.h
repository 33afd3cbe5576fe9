#pragma once

/// @file SvgShapes.h
/// Reads outlines: paths and the basic shapes.

#include <string_view>

#include <pugixml.hpp>

#include "Model/PathBuilder.h"
#include "Svg/Scanner.h"
#include "Svg/SvgContext.h"

namespace tqdoc {

/// Returns true for path, rect, circle, ellipse, line, polyline and polygon.
[[nodiscard]] bool isOutline(std::string_view name) noexcept;

/// Returns the outline of such an element; empty if it draws nothing. Invalid attributes count as
/// ignored features, with the name of the element.
[[nodiscard]] tq::Ref<PathData> readOutline(SvgContext& context, pugi::xml_node node,
                                            Viewport viewport);

/// Returns the outline of a rect.
[[nodiscard]] tq::Ref<PathData> rectanglePath(const tq::Rect& rect);

/// Returns the length in an attribute, or `otherwise` if it is absent or invalid (which is
/// counted).
[[nodiscard]] double lengthOf(SvgContext& context, pugi::xml_node node, const char* attribute,
                              Viewport viewport, Extent extent, double otherwise = 0);

/// Returns the transform in an attribute, or the identity if it is absent or invalid.
[[nodiscard]] tq::AffineTransform transformOf(SvgContext& context, pugi::xml_node node,
                                              const char* attribute = "transform");

/// Returns the viewBox of an element. No value if it is absent, empty or invalid, which is counted.
[[nodiscard]] std::optional<tq::Rect> viewBoxOf(SvgContext& context, pugi::xml_node node);

/// Returns x, y, width and height in lengths of the viewport; absent sizes are `otherwise`.
[[nodiscard]] tq::Rect frameOf(SvgContext& context, pugi::xml_node node, Viewport viewport,
                               tq::Size otherwise = {});

}  // namespace tqdoc
