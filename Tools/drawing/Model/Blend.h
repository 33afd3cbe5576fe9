#pragma once

/// @file Blend.h
/// Blend modes.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tqdoc {

/// How the colours of a node are mixed with those behind it. Source: Compositing and Blending
/// Level 1 (W3C, 2015), section 10.
enum class Blend : std::uint8_t {
  normal,
  multiply,
  screen,
  overlay,
  darken,
  lighten,
  colorDodge,
  colorBurn,
  hardLight,
  softLight,
  difference,
  exclusion,
  hue,
  saturation,
  color,
  luminosity,
};

/// Returns the name in style sheets and archives, such as "color-dodge".
[[nodiscard]] std::string_view nameOf(Blend blend) noexcept;

/// Returns the mode with this name, or no value.
[[nodiscard]] std::optional<Blend> blendNamed(std::string_view name) noexcept;

}  // namespace tqdoc
