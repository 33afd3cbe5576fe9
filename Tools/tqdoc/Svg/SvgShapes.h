#pragma once

/// @file SvgShapes.h
/// Elements that are outlines: paths and the basic shapes.

#include <string_view>

#include <pugixml.hpp>

#include "Model/PathBuilder.h"
#include "Svg/Scanner.h"
#include "Svg/SvgContext.h"

namespace tqdoc {

/// True for path, rect, circle, ellipse, line, polyline and polygon.
[[nodiscard]] bool isOutline(std::string_view name) noexcept;

/// The outline of such an element; empty when it draws nothing. Attributes that cannot be read
/// count as left out, with the element's name.
[[nodiscard]] tq::Ref<PathData> readOutline(SvgContext& context, pugi::xml_node node,
                                            Viewport viewport);

/// The outline of a rect.
[[nodiscard]] tq::Ref<PathData> rectanglePath(const tq::Rect& rect);

/// The length in an attribute; `otherwise` when it is absent or, counted as left out, unreadable.
[[nodiscard]] double lengthOf(SvgContext& context, pugi::xml_node node, const char* attribute,
                              Viewport viewport, Extent extent, double otherwise = 0);

/// The transform in an attribute; the identity likewise.
[[nodiscard]] tq::AffineTransform transformOf(SvgContext& context, pugi::xml_node node,
                                              const char* attribute = "transform");

/// x, y, width and height in the viewport's lengths; absent sizes are `otherwise`.
[[nodiscard]] tq::Rect frameOf(SvgContext& context, pugi::xml_node node, Viewport viewport,
                               tq::Size otherwise = {});

}  // namespace tqdoc
