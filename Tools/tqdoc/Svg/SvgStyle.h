#pragma once

/// @file SvgStyle.h
/// The properties of an element, once sheets, attributes and inheritance have been put together.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Svg/Scanner.h"
#include "Svg/SvgColor.h"

namespace tqdoc {

/// What an outline is filled or stroked with.
struct Paint {
  std::string server;          ///< id of a gradient; empty for plain paint
  std::optional<Color> color;  ///< the colour, or the one to take when the server is missing
  bool currentColor = false;   ///< the style's `color` in place of `color`

  friend bool operator==(const Paint&, const Paint&) = default;
};

struct Style {
  // Inherited.
  Paint fill{{}, Color{}, false};
  Paint stroke;
  double fillOpacity = 1;
  double strokeOpacity = 1;
  double strokeWidth = 1;
  double miterLimit = 4;
  std::vector<double> dashes;
  double dashOffset = 0;
  std::string lineCap = "butt";
  std::string lineJoin = "miter";
  bool fillEvenOdd = false;
  bool clipEvenOdd = false;
  bool visible = true;
  Color color;
  double fontSize = 16;

  // The element's own.
  double opacity = 1;
  bool displayed = true;
  bool overflows = false;
  std::string clipPath;  ///< id, or empty
  Color stopColor;
  bool stopIsCurrentColor = false;
  double stopOpacity = 1;

  /// What a child starts from.
  [[nodiscard]] Style inherited() const;
};

enum class Understood {
  yes,
  notTheValue,     ///< it keeps the value it had
  notTheProperty,  ///< it would change how the drawing looks, but nothing here knows it
};

/// Sets one property. Those that cannot change the look of outlines (fonts, editors' own) are
/// understood to do nothing. "inherit" takes over the parent's value.
/// @param value  trimmed, without "!important"
Understood setProperty(Style& style, const Style& parent, std::string_view name,
                       std::string_view value, Viewport viewport);

/// True for names that are properties when they stand as attributes.
[[nodiscard]] bool isProperty(std::string_view name) noexcept;

}  // namespace tqdoc
