#pragma once

/// @file SvgStyle.h
/// The properties of an element, after style sheets, attributes and inheritance.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Blend.h"
#include "Svg/Scanner.h"
#include "Svg/SvgColor.h"
#include "Svg/SvgTextStyle.h"

namespace tqdoc {

/// The paint of a fill or a stroke.
struct Paint {
  std::string server;          ///< id of a gradient or a pattern; empty for plain paint
  std::optional<Color> color;  ///< the colour, or the fallback for a missing server
  bool currentColor = false;   ///< use the style's `color` instead of `color`

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
  std::string paintOrder;  ///< empty, or all of "fill", "stroke" and "markers" in another order
  std::string markerStart, markerMid, markerEnd;  ///< ids, or empty
  bool visible = true;
  Color color;
  double fontSize = 16;
  TextStyle text;
  bool linearFilters = true;  ///< filters compute with linear light instead of sRGB values

  // Not inherited.
  bool strokeScales = true;
  double opacity = 1;
  bool displayed = true;
  bool overflows = false;
  Blend blend = Blend::normal;
  bool isolated = false;
  std::optional<std::string> transform;  ///< of a style sheet: replaces the attribute
  std::string transformOrigin;
  bool transformsInBounds = false;  ///< lengths of both are relative to the bounds of the node
  std::string clipPath;             ///< id, or empty
  std::string filter;               ///< id, or empty
  std::string mask;                 ///< id, or empty
  bool alphaMask = false;
  Color floodColor;
  bool floodIsCurrentColor = false;
  double floodOpacity = 1;
  Color stopColor;
  bool stopIsCurrentColor = false;
  double stopOpacity = 1;

  /// Returns the initial style of a child.
  [[nodiscard]] Style inherited() const;
};

enum class Understood {
  yes,
  notTheValue,     ///< invalid or unsupported value; the property keeps its old value
  notTheProperty,  ///< unknown property
};

/// Sets one property. Unsupported properties are accepted if they change nothing; see
/// isIdleDeclaration(). "inherit" copies the value of the parent.
/// @param value  trimmed, without "!important"
Understood setProperty(Style& style, const Style& parent, std::string_view name,
                       std::string_view value, Viewport viewport);

/// Returns true for attributes that are properties.
[[nodiscard]] bool isProperty(std::string_view name) noexcept;

}  // namespace tqdoc
