#pragma once

/// @file SvgTransform.h
/// Parses transforms of attributes and style sheets.

#include <optional>
#include <string_view>

#include <TQFoundation/base/AffineTransform.h>

#include "Svg/Scanner.h"

namespace tqdoc {

/// Returns the product of a list of transforms; the last one is applied to a point first. The
/// identity for an empty list, no value for an invalid one.
[[nodiscard]] std::optional<tq::AffineTransform> parseTransform(std::string_view text);

/// Parses the functions of a style sheet's transform, whose arguments have units, or "none".
/// Percentages are relative to the viewport. No value for anything else, such as a 3D function.
[[nodiscard]] std::optional<tq::AffineTransform> parseStyleTransform(std::string_view text,
                                                                     Viewport viewport);

/// Parses one or two lengths or words such as "left bottom". The origin for an empty text, no value
/// for an invalid one.
[[nodiscard]] std::optional<tq::Point> parseTransformOrigin(std::string_view text,
                                                            Viewport viewport);

}  // namespace tqdoc
