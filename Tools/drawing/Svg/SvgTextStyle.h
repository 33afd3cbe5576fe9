#pragma once

/// @file SvgTextStyle.h
/// The properties of text.

#include <optional>
#include <string>
#include <string_view>

#include <TQFoundation/TQFoundation.h>

#include "Svg/Scanner.h"

namespace tqdoc {

/// The words are those of style sheets. Everything is inherited: decorations and shifts of the
/// baseline add up from element to element.
struct TextStyle {
  std::string family;
  std::string language;  ///< a tag such as "de-AT"; if empty, English
  std::string_view slant = "normal";
  std::string_view variant = "normal";
  std::string_view stretch = "normal";
  std::string_view anchor = "start";
  std::string_view direction = "ltr";
  double weight = 400;
  double letterSpacing = 0;
  double wordSpacing = 0;
  double baselineShift = 0;  ///< upwards
  bool isUnderlined = false;
  bool isOverlined = false;
  bool isStruckThrough = false;
};

/// Sets one property of text, or its language; `font` without its size and `font-size` are not
/// among them.
/// @param viewport  with the element's font size
/// @return whether the value is valid, or no value if `name` is not a property of text
[[nodiscard]] std::optional<bool> setTextProperty(TextStyle& style, const TextStyle& parent,
                                                  std::string_view name, std::string_view value,
                                                  Viewport viewport);

[[nodiscard]] bool isTextProperty(std::string_view name) noexcept;

/// Returns a font size, which may be relative to the parent's. No value if it is invalid.
[[nodiscard]] std::optional<double> parseFontSize(std::string_view value, Viewport parent) noexcept;

/// The font size in the value of the shorthand `font`; its other parts are set in `style`.
[[nodiscard]] std::optional<double> setFont(TextStyle& style, std::string_view value,
                                            Viewport parent);

/// Adds the entries of a Text's style.
void addTextStyle(tq::MutableDictionary& to, const TextStyle& style, double fontSize);

}  // namespace tqdoc
