#pragma once

/// @file SvgColor.h
/// Parses colours.

#include <optional>
#include <string>
#include <string_view>

namespace tqdoc {

/// Red, green, blue and alpha, each within 0...1, not premultiplied.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const Color&, const Color&) = default;
};

/// Parses "#rgb" and "#rrggbb" (also with alpha), "rgb(…)" and "rgba(…)" with numbers or
/// percentages, the 147 names of SVG, and "transparent". An "icc-color(…)" after it is ignored.
/// Returns no value for anything else, such as "currentColor".
[[nodiscard]] std::optional<Color> parseColor(std::string_view text);

/// Returns "#rrggbb", rounded to 8 bits, without alpha.
[[nodiscard]] std::string colorText(const Color& color);

}  // namespace tqdoc
