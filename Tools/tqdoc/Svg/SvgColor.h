#pragma once

/// @file SvgColor.h
/// Colours as style sheets write them.

#include <optional>
#include <string>
#include <string_view>

namespace tqdoc {

/// Red, green, blue and alpha, each within 0...1, not multiplied by alpha.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const Color&, const Color&) = default;
};

/// "#rgb", "#rrggbb" (each with alpha too), "rgb(…)" and "rgba(…)" with numbers or percentages, the
/// 147 names of SVG and "transparent"; an "icc-color(…)" behind it is passed over. None for
/// anything else, "currentColor" among it.
[[nodiscard]] std::optional<Color> parseColor(std::string_view text);

/// "#rrggbb", rounded to 8 bits; alpha is left out.
[[nodiscard]] std::string colorText(const Color& color);

}  // namespace tqdoc
