#pragma once

/// @file TextLayout.h
/// Converts texts to outlines.

#include <vector>

#include "Model/Text.h"

namespace tqdoc {

/// Returns the outlines of a text's glyphs and decorations, in its coordinates: one shape for each
/// span that draws something. Hinting is off, so that outlines grow in proportion to the font size.
///
/// At most kLaidOutCharacters are laid out. Missing glyphs become boxes. Colour fonts have no
/// outlines. Any thread. The library for text is loaded by the first call, because that takes
/// longer than a whole start without it.
///
/// @throws std::runtime_error if the library is not installed
[[nodiscard]] std::vector<tq::Ref<Shape>> layOut(const Text& text);

inline constexpr std::size_t kLaidOutCharacters = 100'000;

}  // namespace tqdoc
