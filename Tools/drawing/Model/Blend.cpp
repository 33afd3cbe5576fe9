#include "Model/Blend.h"

#include <algorithm>
#include <cstddef>

namespace tqdoc {
namespace {

constexpr std::string_view kNames[] = {"normal",     "multiply",   "screen",      "overlay",
                                       "darken",     "lighten",    "color-dodge", "color-burn",
                                       "hard-light", "soft-light", "difference",  "exclusion",
                                       "hue",        "saturation", "color",       "luminosity"};
static_assert(std::size(kNames) == static_cast<std::size_t>(Blend::luminosity) + 1);

}  // namespace

std::string_view nameOf(Blend blend) noexcept { return kNames[static_cast<std::size_t>(blend)]; }

std::optional<Blend> blendNamed(std::string_view name) noexcept {
  const auto found = std::ranges::find(kNames, name);
  if (found == std::end(kNames)) return std::nullopt;
  return static_cast<Blend>(found - std::begin(kNames));
}

}  // namespace tqdoc
