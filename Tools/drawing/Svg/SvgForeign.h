#pragma once

/// @file SvgForeign.h
/// Parts of SVG and of style sheets that are known, but not supported.

#include <optional>
#include <string_view>

namespace tqdoc {

/// Returns whether a declaration changes nothing in a drawing, although its property is not
/// supported: those of editors and of web pages, and others with a value such as "auto". No value
/// for an unknown property.
[[nodiscard]] std::optional<bool> isIdleDeclaration(std::string_view property,
                                                    std::string_view value);

/// Returns true for properties of the table that may also be attributes.
[[nodiscard]] bool isForeignAttribute(std::string_view name);

/// Returns true for elements that change a drawing wherever they are, such as animations and fonts.
/// None of them is supported.
[[nodiscard]] bool isForeignElement(std::string_view name);

}  // namespace tqdoc
