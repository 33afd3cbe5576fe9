#include "Svg/SvgForeign.h"

#include <algorithm>
#include <span>

namespace tqdoc {
namespace {

struct ForeignProperty {
  std::string_view name;
  std::string_view idle;  ///< words, or "*" if no value changes a drawing here
};

constexpr ForeignProperty kForeignAttributes[] = {
    {"alignment-baseline", "auto baseline alphabetic"},
    {"buffered-rendering", "*"},
    {"clip", "auto"},
    {"color-interpolation", "auto sRGB"},
    {"color-profile", "auto sRGB"},
    {"color-rendering", "*"},
    {"cursor", "*"},
    {"dominant-baseline", "auto alphabetic"},
    {"enable-background", "*"},  // filters that use the background are left out
    {"font-size-adjust", "none"},
    {"glyph-orientation-horizontal", "auto 0 0deg"},
    {"glyph-orientation-vertical", "*"},  // only for vertical lines
    {"image-rendering", "auto optimizeQuality smooth high-quality"},
    {"kerning", "auto"},
    {"lighting-color", "*"},  // filters with light are left out
    {"pointer-events", "*"},
    {"shape-rendering", "auto geometricPrecision"},
    {"solid-color", "*"},  // only for an element that is left out
    {"solid-opacity", "*"},
    {"text-overflow", "*"},  // lines do not break and are not cut
    {"text-rendering", "*"},
    {"unicode-bidi", "normal embed"},
    {"white-space", "normal nowrap"},
    {"writing-mode", "lr-tb lr horizontal-tb"},
};

constexpr ForeignProperty kForeignDeclarations[] = {
    {"-inkscape-font-specification", "*"},
    {"-inkscape-stroke", "none"},
    {"animation", "none"},
    {"backdrop-filter", "none"},
    {"background", "none transparent"},
    {"background-color", "none transparent"},
    {"block-progression", "tb"},
    {"border", "none 0"},
    {"bottom", "*"},
    {"box-shadow", "none"},
    {"box-sizing", "*"},
    {"cx", "auto"},
    {"cy", "auto"},
    {"d", "none"},
    {"filter-blend-mode", "*"},
    {"filter-gaussianBlur-deviation", "*"},
    {"float", "*"},
    {"font-feature-settings", "normal"},
    {"font-kerning", "auto normal"},
    {"font-optical-sizing", "auto"},
    {"font-palette", "normal"},
    {"font-synthesis", "*"},
    {"font-variant-alternates", "normal"},
    {"font-variant-caps", "normal"},
    {"font-variant-east-asian", "normal"},
    {"font-variant-east_asian", "normal"},
    {"font-variant-ligatures", "normal"},
    {"font-variant-numeric", "normal"},
    {"font-variant-position", "normal"},
    {"font-variation-settings", "normal"},
    {"height", "auto"},
    {"hyphens", "*"},
    {"inline-size", "auto 0"},
    {"left", "*"},
    {"line-break", "*"},
    {"line-height", "*"},
    {"margin", "*"},
    {"mask-border", "none"},
    {"mask-image", "none"},
    {"max-height", "*"},
    {"max-width", "*"},
    {"min-height", "*"},
    {"min-width", "*"},
    {"outline", "none 0"},
    {"overflow-wrap", "*"},
    {"padding", "*"},
    {"position", "*"},
    {"r", "auto"},
    {"right", "*"},
    {"rotate", "none"},
    {"rx", "auto"},
    {"ry", "auto"},
    {"scale", "none"},
    {"shape-image-threshold", "*"},
    {"shape-inside", "auto none"},
    {"shape-margin", "*"},  // only with shape-inside
    {"shape-padding", "*"},
    {"shape-subtract", "auto none"},
    {"text-align", "*"},
    {"text-align-all", "*"},
    {"text-align-last", "*"},
    {"text-decoration-color", "*"},  // decorations have the paint of their text
    {"text-decoration-skip-ink", "*"},
    {"text-decoration-style", "solid"},
    {"text-decoration-thickness", "auto from-font"},
    {"text-indent", "*"},
    {"text-orientation", "*"},  // only for vertical lines
    {"text-shadow", "none"},
    {"text-transform", "none"},
    {"text-underline-offset", "auto"},
    {"text-underline-position", "auto"},
    {"text-wrap", "*"},
    {"top", "*"},
    {"transition", "*"},
    {"translate", "none"},
    {"user-select", "*"},
    {"vertical-align", "baseline"},
    {"width", "auto"},
    {"will-change", "*"},
    {"word-break", "*"},
    {"word-wrap", "*"},
    {"x", "auto"},
    {"y", "auto"},
    {"z-index", "*"},
};

static_assert(std::ranges::is_sorted(kForeignAttributes, {}, &ForeignProperty::name));
static_assert(std::ranges::is_sorted(kForeignDeclarations, {}, &ForeignProperty::name));

constexpr std::string_view kForeignElements[] = {
    "animate", "animateColor", "animateMotion", "animateTransform", "set",     "discard",
    "script",  "font",         "font-face",     "color-profile",    "handler", "listener"};

[[nodiscard]] bool isIdleValue(std::string_view idle, std::string_view value) {
  if (idle == "*" || value == "inherit") return true;
  for (std::size_t begin = 0; begin < idle.size();) {
    const std::size_t end = std::min(idle.find(' ', begin), idle.size());
    if (idle.substr(begin, end - begin) == value) return true;
    begin = end + 1;
  }
  return false;
}

}  // namespace

std::optional<bool> isIdleDeclaration(std::string_view property, std::string_view value) {
  if (property.starts_with("--")) return true;  // a variable: its users are left out
  using Table = std::span<const ForeignProperty>;
  for (const Table table : {Table(kForeignAttributes), Table(kForeignDeclarations)}) {
    const auto found = std::ranges::lower_bound(table, property, {}, &ForeignProperty::name);
    if (found != table.end() && found->name == property) return isIdleValue(found->idle, value);
  }
  return std::nullopt;
}

bool isForeignAttribute(std::string_view name) {
  return std::ranges::binary_search(kForeignAttributes, name, {}, &ForeignProperty::name);
}

bool isForeignElement(std::string_view name) {
  return std::ranges::find(kForeignElements, name) != std::end(kForeignElements);
}

}  // namespace tqdoc
