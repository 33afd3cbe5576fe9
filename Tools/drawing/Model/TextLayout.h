#pragma once

/// @file TextLayout.h
/// Converts texts to outlines.

#include <cstddef>
#include <vector>

#include "Model/Text.h"

namespace tqdoc {

/// The outlines of a text, and what they lack.
struct TextOutlines {
  std::vector<tq::Ref<Shape>> shapes;
  std::size_t withoutGlyph = 0;  ///< characters that no installed font has: they become boxes
  std::size_t coloured = 0;      ///< characters of colour fonts: their outlines are rough
};

/// Returns the outlines of a text's glyphs and decorations, in its coordinates: one shape for each
/// span that draws something. Hinting is off, so that outlines grow in proportion to the font size.
///
/// At most kLaidOutCharacters are laid out. Any thread. The library for text is loaded by the first
/// call, because that takes longer than a whole start without it.
///
/// @throws std::runtime_error if the library is not installed
[[nodiscard]] TextOutlines layOut(const Text& text);

inline constexpr std::size_t kLaidOutCharacters = 100'000;

}  // namespace tqdoc
